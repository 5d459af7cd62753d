#pragma once

namespace fernhollow {

/// The program from its arguments to its exit code.
int launch(int argc, char** argv);

} // namespace fernhollow
