#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <fstream>

#include "VintfManifest.h"

namespace {

TEST(VintfManifestTest, ReadsBothInstanceFormsAndSkipsTheRest) {
    VintfManifest manifest;
    manifest.addDocument(R"(<manifest version="1.0" type="device">
    <!-- <hal format="aidl"><name>commented.out</name><fqname>IGone/default</fqname></hal> -->
    <hal format="aidl">
        <name>vendor.tavix.tps</name>
        <version>1</version>
        <fqname>ITps/default</fqname>
    </hal>
    <hal format="aidl" optional="true">
        <name>vendor.other</name>
        <interface>
            <name>IOther</name>
            <instance>a</instance>
            <instance>b</instance>
        </interface>
    </hal>
    <hal format="hidl">
        <name>android.hardware.old</name>
        <fqname>@1.0::IOld/default</fqname>
    </hal>
</manifest>)");
    EXPECT_TRUE(manifest.isDeclared("vendor.tavix.tps.ITps/default"));
    EXPECT_TRUE(manifest.isDeclared("vendor.other.IOther/a"));
    EXPECT_TRUE(manifest.isDeclared("vendor.other.IOther/b"));
    EXPECT_FALSE(manifest.isDeclared("vendor.tavix.tps.ITps/other"));
    EXPECT_FALSE(manifest.isDeclared("commented.out.IGone/default"));
    EXPECT_FALSE(manifest.isDeclared("android.hardware.old.IOld/default"));
    EXPECT_EQ(manifest.instancesOf("vendor.other.IOther"), (std::vector<std::string>{"a", "b"}));
    EXPECT_TRUE(manifest.instancesOf("vendor.other").empty());
}

TEST(VintfManifestTest, LoadsEveryXmlFileOfAFolder) {
    char dir[] = "/tmp/vintf-test.XXXXXX";
    ASSERT_NE(mkdtemp(dir), nullptr);
    const std::string base = dir;
    std::ofstream(base + "/a.xml") << R"(<manifest><hal format="aidl"><name>p.a</name>
        <fqname>IA/default</fqname></hal></manifest>)";
    std::ofstream(base + "/b.xml") << R"(<manifest><hal format="aidl"><name>p.b</name>
        <fqname>IB/x</fqname></hal></manifest>)";
    std::ofstream(base + "/c.txt") << R"(<manifest><hal format="aidl"><name>p.c</name>
        <fqname>IC/default</fqname></hal></manifest>)";
    const VintfManifest manifest = VintfManifest::load(base);
    EXPECT_EQ(manifest.declared(), (std::vector<std::string>{"p.a.IA/default", "p.b.IB/x"}));
    for (const char* file : {"/a.xml", "/b.xml", "/c.txt"}) unlink((base + file).c_str());
    rmdir(dir);

    EXPECT_TRUE(VintfManifest::load("/nonexistent/vintf").declared().empty());
}

}  // namespace
