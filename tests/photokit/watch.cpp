// What the stand-in does in plain C++, and what holds for every test on it: when it is over every
// object is gone, and nothing was autoreleased where no pool was open, or raised.
#include "tests/double/scripted_library.h"

#include <gmock/gmock.h>

#include <unistd.h>

namespace standin {

long livingObjects();

bool tryToWrite(const platform::NSFileHandle& file, const platform::NSData& bytes,
                std::optional<std::string>& reason) {
    try {
        platform::writeData(file, bytes);
        return true;
    } catch (const platform::NSException& exception) {
        reason = exception.reason;
        return false;
    }
}

} // namespace standin

namespace {

class Watch : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override { testing::internal::CaptureStderr(); }
    // By then the test's fixture, its scripted library included, is gone.
    void OnTestEnd(const testing::TestInfo&) override {
        EXPECT_THAT(testing::internal::GetCapturedStderr(),
                    testing::Not(testing::HasSubstr("without pool")));
        EXPECT_EQ(standin::livingObjects(), 0);
    }
};

const bool watched = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new Watch);
    return true;
}();

} // namespace
