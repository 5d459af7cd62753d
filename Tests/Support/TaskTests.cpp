#include "Support/Observable.h"
#include "Support/TaskScope.h"
#include "Support/Testing.h"

#include <stdexcept>

namespace fernhollow::tests {
namespace {

QCoro::Task<> note(std::vector<std::string>& notes, std::string text) {
    notes.push_back(std::move(text));
    co_return;
}

QCoro::Task<> failing() {
    throw std::runtime_error("out of luck");
    co_return;
}

TEST(Tasks, BeginInOrderAfterTheHandlerReturns) {
    const TemporaryHome home;
    std::vector<std::string> notes;
    TaskScope tasks;
    tasks.start([&] { return note(notes, "first"); });
    tasks.start([] { return failing(); });
    tasks.start([&] { return note(notes, "second"); });
    EXPECT_THAT(notes, IsEmpty());
    QCoreApplication::processEvents();
    EXPECT_THAT(notes, ElementsAre("first", "second"));
    EXPECT_THAT(home.log(), testing::HasSubstr("[Tasks] A background task failed: out of luck"));

    tasks.start([&] { return note(notes, "never"); });
    tasks.stop();
    QCoreApplication::processEvents();
    EXPECT_EQ(notes.size(), 2u);
}

TEST(PublishedFields, AnnounceRealChangesBeforeTheyHappen) {
    Observable owner;
    Published<int> field(owner, 1);
    std::vector<int> seen;
    auto first = field.observe([&] { seen.push_back(field.get()); });
    const auto second = owner.observe([&] { first = {}; }); // an observer may end another meanwhile
    field.set(1);
    EXPECT_THAT(seen, IsEmpty());
    field.set(2);
    field.change([](int& value) { ++value; });
    EXPECT_EQ(field.get(), 3);
    EXPECT_THAT(seen, IsEmpty());
    const auto third = field.observe([&] { seen.push_back(field.get()); });
    field.set(4);
    EXPECT_THAT(seen, ElementsAre(3));
}

} // namespace
} // namespace fernhollow::tests
