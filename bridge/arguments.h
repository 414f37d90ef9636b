// Arguments from the host.
//
// JNI hands out characters as modified UTF-8; they are read as strict standard UTF-8. Text with
// U+0000 (two bytes there) or with a character outside the Basic Multilingual Plane (two encoded
// surrogates there) therefore counts as missing. Characters are released before these functions
// return. A host exception that is pending stays pending.
#pragma once

#include <jni.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

// The text of a string argument; nothing when it is null, unreadable or undecodable.
std::optional<std::string> stringArgument(JNIEnv* env, jstring string);

// The same for a string that the host must not pass as null: it is not tested.
std::optional<std::string> textOfString(JNIEnv* env, jstring string);

// The texts of two strings that the host must not pass as null; both are read before either is
// released.
std::pair<std::optional<std::string>, std::optional<std::string>>
textsOfStrings(JNIEnv* env, jstring first, jstring second);

// The texts of two strings that a method needs both. Nothing when either is null, and then neither
// is read, unreadable or undecodable.
std::optional<std::pair<std::string, std::string>> stringPairArgument(JNIEnv* env, jstring first,
                                                                      jstring second);

// The texts of a string array, in order; elements that are null, unreadable or undecodable are
// left out. Each element's local reference is given back before the next one is taken, so that
// arrays may be of any length. Nothing when the array is null, or yields no text.
std::vector<std::string> stringArrayArgument(JNIEnv* env, jobjectArray strings);
