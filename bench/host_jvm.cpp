#include "bench/host_jvm.h"

#include "bridge/entry_points.h"

#include <cstdio>
#include <cstdlib>

namespace bench {

namespace {

JavaVM* machine() {
    static JavaVM* const made = [] {
        JavaVM* created = nullptr;
        JNIEnv* environment = nullptr;
        JavaVMInitArgs arguments{};
        arguments.version = JNI_VERSION_10;
        if (JNI_CreateJavaVM(&created, reinterpret_cast<void**>(&environment), &arguments) !=
            JNI_OK) {
            std::printf("photos_bench: no JVM could be made\n");
            std::exit(3);
        }
        return created;
    }();
    return made;
}

} // namespace

JNIEnv* jvm() {
    thread_local JNIEnv* const environment = [] {
        void* attached = nullptr;
        machine()->AttachCurrentThread(&attached, nullptr);
        return static_cast<JNIEnv*>(attached);
    }();
    return environment;
}

jobjectArray stringArray(const std::vector<std::string>& texts) {
    JNIEnv* env = jvm();
    const auto length = static_cast<jsize>(texts.size());
    jobjectArray array = env->NewObjectArray(length, env->FindClass("java/lang/String"), nullptr);
    for (jsize i = 0; i < length; ++i) {
        jstring text = env->NewStringUTF(texts[static_cast<std::size_t>(i)].c_str());
        env->SetObjectArrayElement(array, i, text);
        env->DeleteLocalRef(text);
    }
    return array;
}

std::string textOf(jstring string) {
    if (!string)
        return {};
    const char* characters = jvm()->GetStringUTFChars(string, nullptr);
    std::string text = characters;
    jvm()->ReleaseStringUTFChars(string, characters);
    return text;
}

std::vector<std::string> importFiles(const std::vector<std::string>& paths) {
    JNIEnv* env = jvm();
    const LocalFrame frame;
    jobjectArray result = Java_com_morrowfen_lumatrice_service_PhotosService_nativeImportAssets(
        env, nullptr, stringArray(paths));
    std::vector<std::string> identifiers;
    for (jsize i = 0; result && i < env->GetArrayLength(result); ++i) {
        auto* identifier = static_cast<jstring>(env->GetObjectArrayElement(result, i));
        identifiers.push_back(textOf(identifier));
        env->DeleteLocalRef(identifier);
    }
    return identifiers;
}

} // namespace bench
