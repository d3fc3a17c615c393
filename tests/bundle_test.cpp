// Bundles of the Core Foundation stand-in: reading Info.plist and what a
// bundle object is.
#include "bundles.h"
#include "cfobject.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace testing_support;

// Info.plist as Apple writes it and as Apple's reader takes it.
TEST(InfoPlist, ByteOrderMarkCdataAndCommentsInText) {
    EXPECT_EQ(cfimpl::parseInfoPlist("\xEF\xBB\xBF<?xml version=\"1.0\"?><plist version=\"1.0\"><dict>"
                                     "<key>CFBundleExecutable</key><string>CapoChords</string></dict></plist>"),
              (cfimpl::InfoDictionary{{"CFBundleExecutable", "CapoChords"}}));
    EXPECT_EQ(cfimpl::parseInfoPlist("<plist version=\"1.0\"><dict><key>A</key>"
                                     "<string>x<![CDATA[<&>]]>y<!-- c -->z&lt;</string></dict></plist>"),
              (cfimpl::InfoDictionary{{"A", "x<&>yz<"}}));
    EXPECT_TRUE(cfimpl::parseInfoPlist("<plist version=\"1.0\"><dict><key>A</key>"
                                       "<string><![CDATA[open</string></dict></plist>")
                    .empty());
    EXPECT_TRUE(cfimpl::parseInfoPlist("<plist version=\"1.0\"><dict><key>A</key>"
                                       "<string>a<b</string></dict></plist>")
                    .empty());
}

TEST(Bundle, FolderWithoutInfoPlistIsABundleWithNoValues) {
    TempDir d;
    CFBundleRef b = bundleAt(d.path());
    ASSERT_NE(b, nullptr);
    EXPECT_EQ(CFBundleGetValueForInfoDictionaryKey(b, kCFBundleExecutableKey), nullptr);
    CFRelease(b);
    EXPECT_EQ(bundleAt(d.path() + "/missing"), nullptr);
    writeFile(d.path() + "/file", "x");
    EXPECT_EQ(bundleAt(d.path() + "/file"), nullptr);
}

}  // namespace
