#pragma once

#include <ostream>

namespace filterlab {

// The whole program: returns the exit status (0 done, 1 bad input or output, 2 usage error).
// Results go to files or `out`, diagnostics to `err`.
int runFilterLab(int argc, const char* const* argv, std::ostream& out, std::ostream& err);

}  // namespace filterlab
