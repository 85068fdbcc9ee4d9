#include "system/PathConvention.h"

#include <gtest/gtest.h>

#include "system/RegPathConvention.h"

namespace {

using Components = std::vector<std::wstring>;

// A file-style convention with a prefix, to reach the prefix kinds 3 and 4.
struct PrefixedConvention : FileSystem::SimplePathConventionImpl<PrefixedConvention> {
    PrefixedConvention()
        : SimplePathConventionImpl(FileSystem::PathConventionSettings{L"/", L"/", L"dev:", false}) {
    }
};

// No root marker: a path without separator is the root.
struct BareConvention : FileSystem::SimplePathConventionImpl<BareConvention> {
    BareConvention()
        : SimplePathConventionImpl(FileSystem::PathConventionSettings{L".", L"", L"", true}) {}
};

}  // namespace

TEST(RegPathConvention, AppendSplitCountAndRemove) {
    const Registry::RegPathConvention reg;
    const FileSystem::IPathConvention& conv = reg;
    EXPECT_TRUE(conv.GetFlag());
    EXPECT_TRUE(conv.IsValid(L"anything at all"));

    std::wstring path;
    EXPECT_TRUE(conv.Append(path, L"Software"));
    EXPECT_EQ(path, L"Software");
    EXPECT_TRUE(conv.Append(path, L"X"));
    EXPECT_EQ(path, L"Software\\X");
    path = L"Software\\";
    EXPECT_TRUE(conv.Append(path, L"Y"));
    EXPECT_EQ(path, L"Software\\Y");

    Components parts;
    EXPECT_TRUE(conv.Split(L"Software\\ResourceLib\\", parts));
    EXPECT_EQ(parts, (Components{L"Software", L"ResourceLib"}));
    EXPECT_TRUE(conv.Split(L"a\\\\b", parts));
    EXPECT_EQ(parts, (Components{L"a", L"", L"b"}));
    parts = {L"stale"};
    EXPECT_FALSE(conv.Split(L"", parts));
    EXPECT_TRUE(parts.empty());

    EXPECT_EQ(conv.CountComponents(L""), -1);
    EXPECT_EQ(conv.CountComponents(L"\\"), 1);
    EXPECT_EQ(conv.CountComponents(L"\\Software"), 1);
    EXPECT_EQ(conv.CountComponents(L"Software\\ResourceLib"), 2);
    EXPECT_EQ(conv.CountComponents(L"Software\\ResourceLib\\"), 2);

    EXPECT_EQ(conv.Classify(L""), 0);
    EXPECT_EQ(conv.Classify(L"\\"), 2);
    EXPECT_EQ(conv.Classify(L"Software"), 1);
    EXPECT_EQ(conv.Classify(L"Software\\"), 1);

    path = L"Software";
    EXPECT_EQ(conv.RemoveLast(path, 1), 0);
    EXPECT_EQ(path, L"Software");
    path = L"Software\\X\\Y";
    EXPECT_EQ(conv.RemoveLast(path, 5), 2);
    EXPECT_EQ(path, L"Software");
    path = L"Software\\X\\Y\\";
    EXPECT_EQ(conv.RemoveLast(path, 1), 1);
    EXPECT_EQ(path, L"Software\\X");
    path = L"\\Software";
    EXPECT_EQ(conv.RemoveLast(path, 1), 1);
    EXPECT_EQ(path, L"\\");
    EXPECT_EQ(conv.RemoveLast(path, 1), 0);  // the root has nothing to remove
    EXPECT_EQ(path, L"\\");

    EXPECT_EQ(conv.GetLast(L""), L"");
    EXPECT_EQ(conv.GetLast(L"Software\\X\\"), L"X");
    EXPECT_EQ(conv.GetLast(L"Software"), L"Software");

    // The registry convention alone leaves an empty path alone and says yes.
    path.clear();
    EXPECT_TRUE(conv.SetTrailingSeparator(path, 3));
    EXPECT_EQ(path, L"");
    path = L"A";
    EXPECT_TRUE(conv.SetTrailingSeparator(path, 1));
    EXPECT_EQ(path, L"A\\");
    EXPECT_TRUE(conv.SetTrailingSeparator(path, 2));
    EXPECT_EQ(path, L"A");
}

TEST(PathConvention, GenericRulesWithPrefixAndWithoutRootMarker) {
    const PrefixedConvention conv;
    EXPECT_FALSE(conv.GetFlag());

    // Unlike the registry, an empty path cannot take a trailing separator or a name.
    std::wstring path;
    EXPECT_FALSE(conv.SetTrailingSeparator(path, 1));
    EXPECT_FALSE(conv.Append(path, L"name"));
    EXPECT_EQ(path, L"");

    EXPECT_EQ(conv.Classify(L"dev:"), 0);
    EXPECT_EQ(conv.Classify(L"dev:sda"), 4);
    EXPECT_EQ(conv.Classify(L"dev:sda/dir/file"), 3);
    EXPECT_EQ(conv.Classify(L"/"), 2);
    EXPECT_EQ(conv.Classify(L"/usr/lib"), 1);

    EXPECT_EQ(conv.CountComponents(L"dev:sda"), 1);
    EXPECT_EQ(conv.CountComponents(L"dev:sda/dir/file"), 3);
    EXPECT_EQ(conv.CountComponents(L"dev:"), -1);

    Components parts;
    EXPECT_TRUE(conv.Split(L"dev:sda/dir/", parts));
    EXPECT_EQ(parts, (Components{L"sda", L"dir"}));
    EXPECT_TRUE(conv.Split(L"/", parts));
    EXPECT_EQ(parts, (Components{L""}));

    // Removal stops at the prefix.
    path = L"dev:sda/dir/file";
    EXPECT_EQ(conv.RemoveLast(path, 10), 2);
    EXPECT_EQ(path, L"dev:sda");
    EXPECT_EQ(conv.RemoveLast(path, 1), 0);
    EXPECT_EQ(path, L"dev:sda");

    const BareConvention bare;
    EXPECT_EQ(bare.Classify(L"com"), 2);
    EXPECT_EQ(bare.Classify(L"www.example.com"), 1);
    EXPECT_EQ(bare.CountComponents(L"www.example.com."), 3);
    path = L"www.example.com";
    EXPECT_EQ(bare.RemoveLast(path, 1), 1);
    EXPECT_EQ(path, L"www.example");  // no root marker to fall back to
    path = L"a.b";
    EXPECT_EQ(bare.RemoveLast(path, 3), 1);
    EXPECT_EQ(path, L"a");
}
