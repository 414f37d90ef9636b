#include "bridge/arguments.h"

#include "bridge/utf8.h"

#include <cstddef>

namespace {

std::optional<std::string> decodedText(const char* characters) {
    if (characters == nullptr)
        return std::nullopt;
    std::optional<std::string> text(characters);
    if (!isValidUtf8(*text))
        text.reset();
    return text;
}

void releaseCharacters(JNIEnv* env, jstring string, const char* characters) {
    if (characters != nullptr)
        env->ReleaseStringUTFChars(string, characters);
}

} // namespace

std::optional<std::string> stringArgument(JNIEnv* env, jstring string) {
    if (string == nullptr)
        return std::nullopt;
    return textOfString(env, string);
}

std::optional<std::string> textOfString(JNIEnv* env, jstring string) {
    const char* const characters = env->GetStringUTFChars(string, nullptr);
    auto text = decodedText(characters);
    releaseCharacters(env, string, characters);
    return text;
}

std::pair<std::optional<std::string>, std::optional<std::string>>
textsOfStrings(JNIEnv* env, jstring first, jstring second) {
    const char* const firstCharacters = env->GetStringUTFChars(first, nullptr);
    const char* const secondCharacters = env->GetStringUTFChars(second, nullptr);
    std::pair texts(decodedText(firstCharacters), decodedText(secondCharacters));
    releaseCharacters(env, first, firstCharacters);
    releaseCharacters(env, second, secondCharacters);
    return texts;
}

std::optional<std::pair<std::string, std::string>> stringPairArgument(JNIEnv* env, jstring first,
                                                                      jstring second) {
    if (first == nullptr || second == nullptr)
        return std::nullopt;
    auto [firstText, secondText] = textsOfStrings(env, first, second);
    if (!firstText || !secondText)
        return std::nullopt;
    return std::pair(std::move(*firstText), std::move(*secondText));
}

std::vector<std::string> stringArrayArgument(JNIEnv* env, jobjectArray strings) {
    if (strings == nullptr)
        return {};
    const jsize length = env->GetArrayLength(strings);
    if (length < 1)
        return {};
    std::vector<std::string> texts;
    texts.reserve(static_cast<std::size_t>(length));
    for (jsize index = 0; index < length; ++index) {
        const auto element = static_cast<jstring>(env->GetObjectArrayElement(strings, index));
        if (element == nullptr)
            continue;
        if (auto text = textOfString(env, element))
            texts.push_back(std::move(*text));
        env->DeleteLocalRef(element);
    }
    return texts;
}
