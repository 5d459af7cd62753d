#include "App/Shell/SingleInstance.h"
#include "Support/Testing.h"

#include <future>

namespace fernhollow::tests {
namespace {

TEST(Instances, OfOneUserShareOneLock) {
    const TemporaryHome home;
    auto first = std::make_unique<SingleInstance>();
    EXPECT_TRUE(first->acquire());
    SingleInstance second;
    EXPECT_FALSE(second.acquire());
    {
        const EnvironmentGuard elsewhere("XDG_DATA_HOME", (home.path() / "other").native());
        EXPECT_TRUE(SingleInstance().acquire());
    }
    first.reset();
    EXPECT_TRUE(second.acquire());
}

TEST(Instances, ShareALockWhereTheDataFolderCannotBeMade) {
    const TemporaryHome home;
    const EnvironmentGuard nowhere("XDG_DATA_HOME", "/proc/nowhere");
    SingleInstance first;
    EXPECT_TRUE(first.acquire());
    EXPECT_FALSE(SingleInstance().acquire());
}

TEST(Instances, HandTheirRequestsToTheOneThatRuns) {
    const TemporaryHome home;
    std::vector<std::pair<InstanceRequest, ActivationToken>> requests;
    auto running = std::make_unique<SingleInstance>();
    ASSERT_TRUE(running->acquire());
    QObject::connect(running.get(), &SingleInstance::requested, running.get(),
                     [&](InstanceRequest request, const ActivationToken& token) {
                         requests.emplace_back(request, token);
                     });
    running->listen();

    const std::vector<std::pair<InstanceRequest, ActivationToken>> sendings{
        {InstanceRequest::activate, {}}, {InstanceRequest::toggle, "fernhollow_TIME42"}};
    for (const auto& sending : sendings) {
        auto sent = std::async(std::launch::async,
                               [&sending] { return SingleInstance().send(sending.first, sending.second); });
        EXPECT_TRUE(
            waitUntil([&] { return sent.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
        EXPECT_TRUE(sent.get());
    }
    auto quit = std::async(std::launch::async, [] { return SingleInstance().send(InstanceRequest::quit); });
    EXPECT_TRUE(waitUntil([&] { return requests.size() == 3; }));
    EXPECT_NE(quit.wait_for(std::chrono::milliseconds(20)),
              std::future_status::ready); // it has not ended yet
    running.reset();
    EXPECT_TRUE(quit.get());
    EXPECT_THAT(requests,
                ElementsAre(sendings[0], sendings[1], std::pair(InstanceRequest::quit, ActivationToken())));
}

} // namespace
} // namespace fernhollow::tests
