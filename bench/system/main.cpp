// System benchmarks of the service process on the binder driver; see bench/README.md.
//   tools/vm/run-in-vm --smp 1 -- build-bench/bench/system/system_bench [--quick] [--no-thp]
#include <limits.h>
#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "CallbackHost.h"
#include "SystemBench.h"

int main(int argc, char** argv) {
    if (argc == 5 && strcmp(argv[1], "--child") == 0 && strcmp(argv[2], "callbacks") == 0) {
        return sysbench::runCallbackHost(atoi(argv[3]), atoi(argv[4]));
    }
    sysbench::Options options;
    for (int i = 1; i < argc; ++i) {
        if (strcmp(argv[i], "--quick") == 0) {
            options.quick = true;
        } else if (strcmp(argv[i], "--no-thp") == 0) {
            // Inherited by every process started from here: shows what huge pages cost.
            if (prctl(PR_SET_THP_DISABLE, 1, 0, 0, 0) != 0) perror("system_bench: --no-thp");
        } else {
            fprintf(stderr, "usage: system_bench [--quick] [--no-thp]\n");
            return 2;
        }
    }
    char self[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", self, sizeof(self) - 1);
    if (length <= 0) return 1;
    self[length] = '\0';
    signal(SIGPIPE, SIG_IGN);  // a dead sensord shows as a failed write
    return sysbench::SystemBench(self, options).run();
}
