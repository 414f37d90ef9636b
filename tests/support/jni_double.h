// A JNI environment filled by hand, for what no real JVM can be brought to do on demand: arrays
// that cannot be made, strings without characters, counted references.
#pragma once

#include <jni.h>

#include <atomic>
#include <list>
#include <optional>
#include <string>
#include <vector>

namespace jni {

// Stands for any reference. Text is the bytes that GetStringUTFChars hands out, null when it
// fails.
struct Object {
    std::optional<std::string> characters;
    std::vector<Object*> elements; // of an object array
    std::string bytes;             // of a byte array
};

struct Environment {
    Environment();
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

    JNIEnv* env() { return &nativeEnvironment; }

    jstring string(const std::string& modifiedUtf8);
    jstring stringWithoutCharacters();
    jobjectArray array(const std::vector<jstring>& elements);

    // What the library made, read back.
    static std::string textOf(jstring string);
    static std::string bytesOf(jbyteArray array);
    static std::vector<std::optional<std::string>> textsOf(jobjectArray array);

    // Script.
    bool findClassFails = false;
    bool newObjectArrayFails = false;
    bool newByteArrayFails = false;
    bool newStringFails = false;

    // Counts.
    std::atomic<int> charactersHeld = 0; // taken and not released, by calls on any threads
    std::atomic<int> charactersTaken = 0;
    int elementsTaken = 0; // local references to elements that are not null
    int localRefsDeleted = 0;
    int mostElementsHeld = 0; // at the same time
    int newStringCalls = 0;
    std::vector<std::string> newStrings; // bytes given to NewStringUTF

    Object& make();

private:
    JNINativeInterface_ functions{};
    JNIEnv nativeEnvironment{};
    std::list<Object> objects;
};

} // namespace jni
