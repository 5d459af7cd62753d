#pragma once

#include "Support/EventLoop.h"
#include "Support/FakeClock.h"
#include "Support/TemporaryHome.h"

#include <gmock/gmock.h>

#include <chrono>
#include <cstdint>

// What nearly every test uses: a home, a clock and an event loop of its own, and the matchers by their names.
namespace fernhollow::tests {

using namespace std::chrono_literals;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Not;
using testing::Pair;
using testing::SizeIs;
using testing::StartsWith;
using testing::UnorderedElementsAre;

} // namespace fernhollow::tests
