#include "bridge/results.h"

jstring stringResult(JNIEnv* env, const std::string& text) {
    return env->NewStringUTF(text.c_str());
}
