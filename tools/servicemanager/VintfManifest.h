#pragma once

#include <string>
#include <vector>

// The AIDL instances declared by the VINTF manifest fragments of one folder (every *.xml file in
// it), named as services are: "<package>.<interface>/<instance>".
class VintfManifest {
public:
    // A folder that cannot be read declares nothing.
    static VintfManifest load(const std::string& dir);
    // Parses one manifest document; unknown elements are ignored.
    void addDocument(const std::string& xml);

    bool isDeclared(const std::string& instance) const;
    // Instances of an interface ("<package>.<interface>"), e.g. "default".
    std::vector<std::string> instancesOf(const std::string& interface) const;
    const std::vector<std::string>& declared() const { return mDeclared; }

private:
    std::vector<std::string> mDeclared;
};
