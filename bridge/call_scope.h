// The scope that every entry point but nativeAuthorize runs in: temporary objects of the photo
// library made on this thread live until it closes.
#pragma once

#include "platform/foundation.h"

#include <type_traits>
#include <utility>

// Runs `body` in a scope of its own and answers its result. The body's locals are gone when the
// scope closes, because they may refer to temporary objects; a result must therefore be a plain
// JNI value that refers to none.
template <class Body>
auto inCallScope(Body&& body) {
    using Result = std::invoke_result_t<Body>;
    static_assert(std::is_void_v<Result> || std::is_scalar_v<Result>);
    void* const scope = platform::objc_autoreleasePoolPush();
    if constexpr (std::is_void_v<Result>) {
        std::forward<Body>(body)();
        platform::objc_autoreleasePoolPop(scope);
    } else {
        const Result result = std::forward<Body>(body)();
        platform::objc_autoreleasePoolPop(scope);
        return result;
    }
}
