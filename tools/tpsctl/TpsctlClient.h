#pragma once

#include "TpsctlArgs.h"

namespace tpsctl {

// Runs one parsed command against the service and returns the exit status (0 or 1). Errors go
// to stderr, results to stdout.
int runCommand(const Options& options);

}  // namespace tpsctl
