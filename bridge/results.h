// Results for the host.
#pragma once

#include <jni.h>

#include <string>

// A new string for the host, or null when the JVM cannot make one. The text is standard UTF-8 and
// goes over as it stands, not as the modified UTF-8 that the JVM reads: a character outside the
// Basic Multilingual Plane is one sequence of four bytes.
jstring stringResult(JNIEnv* env, const std::string& text);
