// A JNI environment filled by hand, for what no real JVM can be brought to do on demand: arrays
// that cannot be made, strings without characters, counted references.
#pragma once

#include <jni.h>

#include <atomic>
#include <initializer_list>
#include <list>
#include <mutex>
#include <optional>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

// A native method of the host's class by its name: jvm.call(METHOD(AssetCount)).
#define METHOD(name) Java_com_morrowfen_lumatrice_service_PhotosService_native##name

namespace jni {

template <class T>
concept Number = std::is_arithmetic_v<T>;

// Arguments as the host hands them over: a text as modified UTF-8, null, or a string whose
// characters the JVM does not give out.
struct Unreadable {};
inline constexpr Unreadable unreadable;
using Text = std::variant<std::nullptr_t, Unreadable, std::string>;

struct Texts { // an array of them, or null
    Texts(std::nullptr_t) : isNull(true) {}
    Texts(std::initializer_list<Text> given) : elements(given) {}
    Texts(std::vector<Text> given) : elements(std::move(given)) {}

    std::vector<Text> elements;
    bool isNull = false;
};

template <class Native>
struct GivenFor : std::type_identity<Native> {};
template <>
struct GivenFor<jstring> : std::type_identity<Text> {};
template <>
struct GivenFor<jobjectArray> : std::type_identity<Texts> {};

// Stands for any reference.
struct Object {
    std::optional<std::string> characters; // of a string that gives them out, or of a byte array
    std::vector<Object*> elements;         // of an object array
};

struct Environment {
    Environment();
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

    JNIEnv* env() { return &nativeEnvironment; }

    // Calls a method and answers what it answers, as text: "(null)" for null, the elements of an
    // array with commas between them, the bytes of a byte array.
    template <class Result, class... Parameter>
    std::string call(Result (*method)(JNIEnv*, jobject, Parameter...) noexcept,
                     typename GivenFor<Parameter>::type... arguments) {
        if constexpr (std::is_void_v<Result>)
            return method(env(), nullptr, reference(arguments)...), "";
        else
            return answer(method(env(), nullptr, reference(arguments)...));
    }

    jstring reference(const Text& text);
    jobjectArray reference(const Texts& texts);

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

    Object& make();

private:
    template <Number N>
    static N reference(N number) {
        return number;
    }
    static std::string answer(jint number) { return std::to_string(number); }
    static std::string answer(jobject textOrBytes);
    static std::string answer(jobjectArray array);

    JNINativeInterface_ functions{};
    JNIEnv nativeEnvironment{};
    std::mutex objectsMutex; // calls may run on several threads
    std::list<Object> objects;
};

} // namespace jni
