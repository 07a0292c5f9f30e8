#include <cstring>
#include <string>
#include <vector>

#include "FuzzEnvironment.h"
#include "TavixTpsParameter.h"

namespace {

using tps::fuzz::check;

// Keys the service looks up, so their getters run even when the input names none of them.
const char* const kFixedKeys[] = {"brightness", "pqMode", "displaySize", "displayIDs",
                                  "filterRise", "",       "missing"};

// The keys of key=value;key=value as far as the first NUL, the way the parameter set splits them.
std::vector<std::string> keysOf(const std::string& text) {
    std::vector<std::string> keys;
    const std::string visible = text.substr(0, strlen(text.c_str()));
    size_t start = 0;
    while (start <= visible.size()) {
        size_t end = visible.find(';', start);
        if (end == std::string::npos) end = visible.size();
        const std::string token = visible.substr(start, end - start);
        if (!token.empty()) keys.push_back(token.substr(0, token.find('=')));
        start = end + 1;
    }
    return keys;
}

// Every getter answers the same on `a` and on `b` for `key`.
void checkSameAnswers(const TavixTpsParameter& a, const TavixTpsParameter& b,
                      const std::string& key) {
    check(a.containsKey(key) == b.containsKey(key));
    int intA = 0, intB = 0;
    check(a.get<int>(key, intA) == b.get<int>(key, intB) && intA == intB);
    std::vector<int> listA, listB;
    check(a.get<int>(key, listA) == b.get<int>(key, listB) && listA == listB);
    float floatA = 0, floatB = 0;
    // Compared bitwise so that a NaN is equal to itself.
    check(a.get<float>(key, floatA) == b.get<float>(key, floatB) &&
          memcmp(&floatA, &floatB, sizeof(float)) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    tps::fuzz::setUpEnvironment();
    const std::string text(reinterpret_cast<const char*>(data), size);
    TavixTpsParameter params(text);

    std::vector<std::string> keys = keysOf(text);
    for (const std::string& key : keys) check(params.containsKey(key));
    keys.insert(keys.end(), std::begin(kFixedKeys), std::end(kFixedKeys));

    // What toString() prints parses back into the same set.
    const TavixTpsParameter reparsed(params.toString());
    for (const std::string& key : keys) checkSameAnswers(params, reparsed, key);

    // A list stored by add<int> reads back unchanged.
    for (const std::string& key : keys) {
        std::vector<int> list;
        if (!params.get<int>(key, list) || list.empty()) continue;
        TavixTpsParameter reply;
        reply.add<int>("list", list);
        std::vector<int> readBack;
        check(reply.get<int>("list", readBack) && readBack == list);
    }
    return 0;
}
