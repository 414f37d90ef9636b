#include "tests/core/support.h"

using scripted::HandlerCalls;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct Authorization : CoreTest {
    jint authorize() {
        return Java_com_morrowfen_lumatrice_service_PhotosService_nativeAuthorize(jvm.env(),
                                                                                  nullptr);
    }
};

} // namespace

TEST_F(Authorization, MapsEveryStatus) {
    const std::vector<std::pair<long, jint>> expected = {{0, 0}, {1, 0}, {2, 0},  {3, 1},
                                                         {4, 2}, {5, 0}, {-1, 0}, {4294967299, 0}};
    for (const auto& [status, access] : expected) {
        library.authorizationAnswers = {status};
        EXPECT_EQ(authorize(), access) << "status " << status;
    }
}

TEST_F(Authorization, AlwaysAsksForReadingAndWritingAndOpensNoScope) {
    authorize();
    authorize();
    EXPECT_THAT(library.operations(),
                ElementsAre("request authorization, level 2", "request authorization, level 2"));
    EXPECT_THAT(home.logLines(), IsEmpty());
}

TEST_F(Authorization, WaitsForAHandlerOnAnotherThread) {
    for (int round = 0; round < 200; ++round) {
        library.authorizationHandler = HandlerCalls::onceFromAnotherThread;
        library.authorizationAnswers = {platform::PHAuthorizationStatusLimited};
        ASSERT_EQ(authorize(), 2);
    }
}

TEST_F(Authorization, SurvivesAHandlerThatIsCalledAgainAfterTheAnswer) {
    for (int round = 0; round < 200; ++round) {
        library.authorizationHandler = HandlerCalls::twiceFromAnotherThread;
        library.authorizationAnswers = {platform::PHAuthorizationStatusAuthorized};
        ASSERT_EQ(authorize(), 1);
    }
    library.operations();
}
