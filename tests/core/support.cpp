#include "tests/core/support.h"

#include <algorithm>

std::string standardErrorOf(const std::function<void()>& action) {
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
}

std::vector<std::string> CoreTest::operationsOfCall() {
    const std::vector<std::string> all = library.operations();
    if (all.size() < 2 || all.front() != "open scope" || all.back() != "close scope") {
        ADD_FAILURE() << "not inside a scope: " << testing::PrintToString(all);
        return {};
    }
    return {all.begin() + 1, all.end() - 1};
}

bool CoreTest::happened(const std::string& words) {
    const auto lines = library.operations();
    return std::any_of(lines.begin(), lines.end(), [&](const std::string& line) {
        return line.find(words) != std::string::npos;
    });
}
