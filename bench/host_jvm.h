// A real JVM in this process, from which the product is called as its host calls it.
#pragma once

#include <jni.h>

#include <string>
#include <vector>

namespace bench {

// The environment of the calling thread; makes the JVM on first use.
JNIEnv* jvm();

// Lets go of local references made while it lives.
class LocalFrame {
public:
    LocalFrame() { jvm()->PushLocalFrame(64); }
    ~LocalFrame() { jvm()->PopLocalFrame(nullptr); }
    LocalFrame(const LocalFrame&) = delete;
    LocalFrame& operator=(const LocalFrame&) = delete;
};

jobjectArray stringArray(const std::vector<std::string>& texts);
std::string textOf(jstring string);

// Imports the files in one call; answers the new identifiers, empty where a file failed.
std::vector<std::string> importFiles(const std::vector<std::string>& paths);

} // namespace bench
