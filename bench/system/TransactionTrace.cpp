#include "TransactionTrace.h"

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace sysbench {

namespace {

constexpr char kEvent[] = "/events/binder/binder_transaction/";
constexpr char kMarker[] = ": binder_transaction: ";

}  // namespace

TransactionTrace::TransactionTrace(pid_t destination) {
    for (const char* root : {"/sys/kernel/tracing", "/sys/kernel/debug/tracing"}) {
        if (access((std::string(root) + kEvent + "enable").c_str(), W_OK) == 0) {
            mRoot = root;
            break;
        }
    }
    if (mRoot.empty()) return;
    // The file lists every clock with the current one in brackets.
    std::ifstream clocks(mRoot + "/trace_clock");
    std::string word;
    while (clocks >> word) {
        if (word.front() == '[') mOldClock = word.substr(1, word.size() - 2);
    }
    mOk = write("trace_clock", "mono") &&
          write(std::string(kEvent) + "filter",
                "to_proc == " + std::to_string(destination) + " && reply == 0 && flags & 1") &&
          write(std::string(kEvent) + "enable", "1") && write("tracing_on", "1");
}

TransactionTrace::~TransactionTrace() {
    if (mRoot.empty()) return;
    write(std::string(kEvent) + "enable", "0");
    write(std::string(kEvent) + "filter", "0");
    if (!mOldClock.empty()) write("trace_clock", mOldClock);
}

bool TransactionTrace::write(const std::string& file, const std::string& text) const {
    std::ofstream out(mRoot + "/" + file, std::ios::trunc);
    out << text << '\n';
    out.flush();
    return out.good();
}

void TransactionTrace::clear() {
    write("trace", "");
}

std::vector<int64_t> TransactionTrace::onewaySendTimes() const {
    std::ifstream in(mRoot + "/trace");
    std::stringstream text;
    text << in.rdbuf();
    return parse(text.str());
}

// "  sensord-57  [001] ....  812.004211: binder_transaction: transaction=9 ... flags=0x11 ..."
std::vector<int64_t> TransactionTrace::parse(const std::string& trace) {
    std::vector<int64_t> times;
    std::istringstream lines(trace);
    for (std::string line; std::getline(lines, line);) {
        const size_t marker = line.find(kMarker);
        const size_t flags = line.find(" flags=0x", marker);
        if (marker == std::string::npos || flags == std::string::npos) continue;
        if ((std::strtoul(line.c_str() + flags + 9, nullptr, 16) & 1) == 0) continue;
        const size_t start = line.rfind(' ', marker);
        const std::string stamp = line.substr(start + 1, marker - start - 1);
        const size_t dot = stamp.find('.');
        const size_t digits = stamp.size() - dot - 1;
        if (dot == std::string::npos || dot == 0 || digits == 0 || digits > 9) continue;
        int64_t fraction = std::strtoll(stamp.c_str() + dot + 1, nullptr, 10);
        for (size_t d = digits; d < 9; ++d) fraction *= 10;
        times.push_back(std::strtoll(stamp.c_str(), nullptr, 10) * 1000000000 + fraction);
    }
    return times;
}

}  // namespace sysbench
