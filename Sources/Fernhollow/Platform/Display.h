#pragma once

namespace fernhollow {

/// Whether the display server that the environment names accepts us. Waits for its answer.
bool isDisplayReachable();

} // namespace fernhollow
