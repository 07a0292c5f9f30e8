#include "VintfManifest.h"

#include <dirent.h>

#include <algorithm>
#include <fstream>
#include <sstream>

namespace {

std::string trim(const std::string& s) {
    const size_t begin = s.find_first_not_of(" \t\r\n");
    if (begin == std::string::npos) return "";
    const size_t end = s.find_last_not_of(" \t\r\n");
    return s.substr(begin, end - begin + 1);
}

// The sections <tag ...>...</tag> of text, each with its opening tag's attributes.
struct Element {
    std::string attributes;
    std::string body;
};

std::vector<Element> elements(const std::string& text, const std::string& tag) {
    std::vector<Element> found;
    const std::string open = "<" + tag;
    const std::string close = "</" + tag + ">";
    size_t pos = 0;
    while ((pos = text.find(open, pos)) != std::string::npos) {
        const size_t after = pos + open.size();
        // "<name" must not match "<names".
        if (after < text.size() && text[after] != '>' && text[after] != ' ' &&
            text[after] != '\t' && text[after] != '\n' && text[after] != '\r') {
            pos = after;
            continue;
        }
        const size_t tagEnd = text.find('>', after);
        if (tagEnd == std::string::npos) break;
        const size_t end = text.find(close, tagEnd);
        if (end == std::string::npos) break;
        found.push_back(
                {text.substr(after, tagEnd - after), text.substr(tagEnd + 1, end - tagEnd - 1)});
        pos = end + close.size();
    }
    return found;
}

std::string withoutElements(std::string text, const std::string& tag) {
    const std::string open = "<" + tag;
    const std::string close = "</" + tag + ">";
    size_t pos;
    while ((pos = text.find(open)) != std::string::npos) {
        const size_t end = text.find(close, pos);
        if (end == std::string::npos) break;
        text.erase(pos, end + close.size() - pos);
    }
    return text;
}

std::string withoutComments(std::string text) {
    size_t pos;
    while ((pos = text.find("<!--")) != std::string::npos) {
        const size_t end = text.find("-->", pos);
        text.erase(pos, end == std::string::npos ? std::string::npos : end + 3 - pos);
    }
    return text;
}

}  // namespace

VintfManifest VintfManifest::load(const std::string& dir) {
    VintfManifest manifest;
    DIR* d = opendir(dir.c_str());
    if (d == nullptr) return manifest;
    std::vector<std::string> files;
    while (dirent* entry = readdir(d)) {
        const std::string name = entry->d_name;
        if (name.size() > 4 && name.compare(name.size() - 4, 4, ".xml") == 0) files.push_back(name);
    }
    closedir(d);
    std::sort(files.begin(), files.end());
    for (const std::string& file : files) {
        std::ifstream in(dir + "/" + file);
        std::stringstream text;
        text << in.rdbuf();
        manifest.addDocument(text.str());
    }
    return manifest;
}

void VintfManifest::addDocument(const std::string& xml) {
    for (const Element& hal : elements(withoutComments(xml), "hal")) {
        if (hal.attributes.find("format=\"aidl\"") == std::string::npos) continue;
        const std::vector<Element> names = elements(withoutElements(hal.body, "interface"), "name");
        if (names.empty()) continue;
        const std::string package = trim(names.front().body);
        // "IFoo/default", or "@1::IFoo/default" in older fragments.
        for (const Element& fqname : elements(hal.body, "fqname")) {
            std::string value = trim(fqname.body);
            if (const size_t colons = value.find("::"); colons != std::string::npos) {
                value = value.substr(colons + 2);
            }
            if (value.find('/') != std::string::npos) mDeclared.push_back(package + "." + value);
        }
        for (const Element& interface : elements(hal.body, "interface")) {
            const std::vector<Element> ifaceNames = elements(interface.body, "name");
            if (ifaceNames.empty()) continue;
            const std::string iface = trim(ifaceNames.front().body);
            for (const Element& instance : elements(interface.body, "instance")) {
                mDeclared.push_back(package + "." + iface + "/" + trim(instance.body));
            }
        }
    }
}

bool VintfManifest::isDeclared(const std::string& instance) const {
    return std::find(mDeclared.begin(), mDeclared.end(), instance) != mDeclared.end();
}

std::vector<std::string> VintfManifest::instancesOf(const std::string& interface) const {
    std::vector<std::string> instances;
    const std::string prefix = interface + "/";
    for (const std::string& declared : mDeclared) {
        if (declared.compare(0, prefix.size(), prefix) == 0) {
            instances.push_back(declared.substr(prefix.size()));
        }
    }
    return instances;
}
