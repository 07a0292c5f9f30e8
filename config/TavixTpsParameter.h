#pragma once

#include <string>
#include <unordered_map>
#include <vector>

// Text parameters of the form key=value;key=value. Parsing never fails: bad syntax at most leaves
// the set empty. Typed getters return false for absent, empty or unparsable values and log
// parsable values with a flaw (range, trailing text) but still accept them.
class TavixTpsParameter {
public:
    // An empty set, for building replies.
    TavixTpsParameter() = default;
    explicit TavixTpsParameter(const std::string& keyValuePairs);
    virtual ~TavixTpsParameter();

    TavixTpsParameter(const TavixTpsParameter&) = default;
    TavixTpsParameter& operator=(const TavixTpsParameter&) = default;

    // Pairs joined as key=value;key=value in the map's own (unspecified) order.
    std::string toString() const;
    bool containsKey(const std::string& key) const;

    template <typename T>
    bool get(const std::string& key, T& out) const;
    // Appends the comma-separated items to `out`; items converted before a bad one stay appended.
    template <typename T>
    bool get(const std::string& key, std::vector<T>& out) const;
    template <typename T>
    void add(const std::string& key, const std::vector<T>& values);
    // Stores a value already formatted by the caller.
    void add(const std::string& key, const std::string& value);

private:
    std::unordered_map<std::string, std::string> mKeyValuePairs;
};

template <>
bool TavixTpsParameter::get<int>(const std::string& key, int& out) const;
template <>
bool TavixTpsParameter::get<int>(const std::string& key, std::vector<int>& out) const;
template <>
bool TavixTpsParameter::get<float>(const std::string& key, float& out) const;
template <>
void TavixTpsParameter::add<int>(const std::string& key, const std::vector<int>& values);
