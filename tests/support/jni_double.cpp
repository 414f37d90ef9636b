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

const char* JNICALL getStringUTFChars(JNIEnv*, jstring string, jboolean* isCopy) {
    EXPECT_EQ(isCopy, nullptr);
    const auto& characters = objectBehind(string).characters;
    if (!characters)
        return nullptr;
    ++g_current->charactersHeld;
    ++g_current->charactersTaken;
    return strdup(characters->c_str());
}

void JNICALL releaseStringUTFChars(JNIEnv*, jstring, const char* characters) {
    --g_current->charactersHeld;
    free(const_cast<char*>(characters));
}

jsize JNICALL getArrayLength(JNIEnv*, jarray array) {
    return static_cast<jsize>(objectBehind(array).elements.size());
}

jobject JNICALL getObjectArrayElement(JNIEnv*, jobjectArray array, jsize index) {
    Object* const element = objectBehind(array).elements.at(static_cast<std::size_t>(index));
    if (element == nullptr)
        return nullptr;
    ++g_current->elementsTaken;
    g_current->mostElementsHeld = std::max(g_current->mostElementsHeld,
                                           g_current->elementsTaken - g_current->localRefsDeleted);
    return referenceTo<jobject>(*element);
}

void JNICALL deleteLocalRef(JNIEnv*, jobject) {
    ++g_current->localRefsDeleted;
}

jclass JNICALL findClass(JNIEnv*, const char* name) {
    EXPECT_STREQ(name, "java/lang/String");
    return g_current->findClassFails ? nullptr : referenceTo<jclass>(g_current->make());
}

jobjectArray JNICALL newObjectArray(JNIEnv*, jsize length, jclass, jobject initial) {
    EXPECT_EQ(initial, nullptr);
    if (g_current->newObjectArrayFails)
        return nullptr;
    Object& array = g_current->make();
    array.elements.resize(static_cast<std::size_t>(length));
    return referenceTo<jobjectArray>(array);
}

void JNICALL setObjectArrayElement(JNIEnv*, jobjectArray array, jsize index, jobject element) {
    objectBehind(array).elements.at(static_cast<std::size_t>(index)) = &objectBehind(element);
}

jstring JNICALL newStringUTF(JNIEnv*, const char* bytes) {
    ++g_current->newStringCalls;
    if (g_current->newStringFails)
        return nullptr;
    return g_current->reference(jni::Text(bytes));
}

jbyteArray JNICALL newByteArray(JNIEnv*, jsize length) {
    if (g_current->newByteArrayFails)
        return nullptr;
    Object& array = g_current->make();
    array.bytes.resize(static_cast<std::size_t>(length), '?');
    return referenceTo<jbyteArray>(array);
}

void JNICALL setByteArrayRegion(JNIEnv*, jbyteArray array, jsize start, jsize length,
                                const jbyte* bytes) {
    std::string& target = objectBehind(array).bytes;
    ASSERT_LE(static_cast<std::size_t>(start) + static_cast<std::size_t>(length), target.size());
    std::copy_n(bytes, length, target.begin() + start);
}

} // namespace

Environment::Environment() {
    g_current = this;
    functions.GetStringUTFChars = getStringUTFChars;
    functions.ReleaseStringUTFChars = releaseStringUTFChars;
    functions.GetArrayLength = getArrayLength;
    functions.GetObjectArrayElement = getObjectArrayElement;
    functions.DeleteLocalRef = deleteLocalRef;
    functions.FindClass = findClass;
    functions.NewObjectArray = newObjectArray;
    functions.SetObjectArrayElement = setObjectArrayElement;
    functions.NewStringUTF = newStringUTF;
    functions.NewByteArray = newByteArray;
    functions.SetByteArrayRegion = setByteArrayRegion;
    nativeEnvironment.functions = &functions;
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

std::string Environment::answer(jstring string) {
    return string == nullptr ? "(null)" : objectBehind(string).characters.value_or("(none)");
}

std::string Environment::answer(jbyteArray array) {
    return array == nullptr ? "(null)" : objectBehind(array).bytes;
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
