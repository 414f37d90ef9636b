#include "tests/support/jni_double.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace jni {

namespace {

// A JNIEnv holds nothing but the table, so the environment of a call is the one current now.
Environment* g_current = nullptr;

Object& objectBehind(jobject reference) {
    return *reinterpret_cast<Object*>(reference);
}

template <class Reference>
Reference referenceTo(Object& object) {
    return reinterpret_cast<Reference>(&object);
}

Object*& elementOf(jobjectArray array, jsize index) {
    return objectBehind(array).elements.at(static_cast<std::size_t>(index));
}

} // namespace

Environment::Environment() {
    g_current = this;
    nativeEnvironment.functions = &functions;
    functions.GetStringUTFChars = [](JNIEnv*, jstring string, jboolean* isCopy) -> const char* {
        EXPECT_EQ(isCopy, nullptr);
        const auto& characters = objectBehind(string).characters;
        if (!characters)
            return nullptr;
        ++g_current->charactersHeld;
        ++g_current->charactersTaken;
        return strdup(characters->c_str());
    };
    functions.ReleaseStringUTFChars = [](JNIEnv*, jstring, const char* characters) {
        --g_current->charactersHeld;
        free(const_cast<char*>(characters));
    };
    functions.GetArrayLength = [](JNIEnv*, jarray array) {
        return static_cast<jsize>(objectBehind(array).elements.size());
    };
    functions.GetObjectArrayElement = [](JNIEnv*, jobjectArray array, jsize index) -> jobject {
        Object* const element = elementOf(array, index);
        if (element == nullptr)
            return nullptr;
        auto& jvm = *g_current;
        const int held = ++jvm.elementsTaken - jvm.localRefsDeleted;
        jvm.mostElementsHeld = std::max(jvm.mostElementsHeld, held);
        return referenceTo<jobject>(*element);
    };
    functions.DeleteLocalRef = [](JNIEnv*, jobject) { ++g_current->localRefsDeleted; };
    functions.FindClass = [](JNIEnv*, const char* name) {
        EXPECT_STREQ(name, "java/lang/String");
        return g_current->findClassFails ? nullptr : referenceTo<jclass>(g_current->make());
    };
    functions.NewObjectArray = [](JNIEnv*, jsize length, jclass, jobject initial) -> jobjectArray {
        EXPECT_EQ(initial, nullptr);
        if (g_current->newObjectArrayFails)
            return nullptr;
        Object& array = g_current->make();
        array.elements.resize(static_cast<std::size_t>(length));
        return referenceTo<jobjectArray>(array);
    };
    functions.SetObjectArrayElement = [](JNIEnv*, jobjectArray array, jsize index, jobject given) {
        elementOf(array, index) = &objectBehind(given);
    };
    functions.NewStringUTF = [](JNIEnv*, const char* bytes) {
        return g_current->newStringFails ? nullptr : g_current->reference(Text(bytes));
    };
    functions.NewByteArray = [](JNIEnv*, jsize length) -> jbyteArray {
        if (g_current->newByteArrayFails)
            return nullptr;
        Object& array = g_current->make();
        array.characters.emplace(static_cast<std::size_t>(length), '?');
        return referenceTo<jbyteArray>(array);
    };
    functions.SetByteArrayRegion = [](JNIEnv*, jbyteArray array, jsize start, jsize length,
                                      const jbyte* bytes) {
        std::string& target = *objectBehind(array).characters;
        ASSERT_LE(static_cast<std::size_t>(start) + static_cast<std::size_t>(length),
                  target.size());
        std::copy_n(bytes, length, target.begin() + start);
    };
}

Object& Environment::make() {
    const std::lock_guard lock(objectsMutex);
    return objects.emplace_back();
}

jstring Environment::reference(const Text& text) {
    if (std::holds_alternative<std::nullptr_t>(text))
        return nullptr;
    Object& string = make();
    if (const auto* const characters = std::get_if<std::string>(&text))
        string.characters = *characters;
    return referenceTo<jstring>(string);
}

jobjectArray Environment::reference(const Texts& texts) {
    if (texts.isNull)
        return nullptr;
    Object& array = make();
    for (const Text& text : texts.elements)
        array.elements.push_back(reinterpret_cast<Object*>(reference(text)));
    return referenceTo<jobjectArray>(array);
}

std::string Environment::answer(jobject textOrBytes) {
    return textOrBytes == nullptr ? "(null)" : objectBehind(textOrBytes).characters.value();
}

std::string Environment::answer(jobjectArray array) {
    if (array == nullptr)
        return "(null)";
    std::string line;
    for (const Object* element : objectBehind(array).elements)
        line += (line.empty() ? "" : ",") + (element ? *element->characters : "(null)");
    return line;
}

} // namespace jni
