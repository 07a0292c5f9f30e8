#pragma once

#include <string>

namespace sysbench {

// Client process number `process`: registers `count` callbacks with the service, publishes each
// with the service manager (so the bench can call the same objects directly), prints
// "registered" and waits to be killed.
int runCallbackHost(int process, int count);

// The service manager instance of callback `index` of client process `process`.
std::string callbackInstance(int process, int index);

}  // namespace sysbench
