#include "system/PathConvention.h"

#include <gtest/gtest.h>

#include <utility>

#include "system/RegPathConvention.h"

namespace {

using Components = std::vector<std::wstring>;
using Removed = std::pair<int, std::wstring>;  // (components removed, the path after)
using Edit = std::pair<bool, std::wstring>;    // (result, the path after)

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

Removed RemoveLast(const FileSystem::IPathConvention& conv, std::wstring path, int count) {
    const int removed = conv.RemoveLast(path, count);
    return {removed, path};
}

std::pair<bool, Components> Split(const FileSystem::IPathConvention& conv,
                                  const std::wstring& path) {
    Components parts{L"stale"};
    const bool ok = conv.Split(path, parts);
    return {ok, parts};
}

}  // namespace

TEST(RegPathConvention, AppendSplitCountAndRemove) {
    const Registry::RegPathConvention reg;
    const FileSystem::IPathConvention& conv = reg;
    EXPECT_TRUE(conv.GetFlag());
    EXPECT_TRUE(conv.IsValid(L"anything at all"));

    auto append = [&](std::wstring path, const wchar_t* name) {
        const bool ok = conv.Append(path, name);
        return Edit(ok, path);
    };
    EXPECT_EQ(append(L"", L"Software"), Edit(true, L"Software"));
    EXPECT_EQ(append(L"Software", L"X"), Edit(true, L"Software\\X"));
    EXPECT_EQ(append(L"Software\\", L"Y"), Edit(true, L"Software\\Y"));

    EXPECT_EQ(Split(conv, L"Software\\ResourceLib\\"),
              std::make_pair(true, Components{L"Software", L"ResourceLib"}));
    EXPECT_EQ(Split(conv, L"a\\\\b"), std::make_pair(true, Components{L"a", L"", L"b"}));
    EXPECT_EQ(Split(conv, L""), std::make_pair(false, Components{}));

    const std::pair<const wchar_t*, int> counts[] = {{L"", -1},
                                                     {L"\\", 1},
                                                     {L"\\Software", 1},
                                                     {L"Software\\ResourceLib", 2},
                                                     {L"Software\\ResourceLib\\", 2}};
    for (const auto& [path, count] : counts) EXPECT_EQ(conv.CountComponents(path), count) << path;
    const std::pair<const wchar_t*, int> kinds[] = {
        {L"", 0}, {L"\\", 2}, {L"Software", 1}, {L"Software\\", 1}};
    for (const auto& [path, kind] : kinds) EXPECT_EQ(conv.Classify(path), kind) << path;

    EXPECT_EQ(RemoveLast(conv, L"Software", 1), Removed(0, L"Software"));
    EXPECT_EQ(RemoveLast(conv, L"Software\\X\\Y", 5), Removed(2, L"Software"));
    EXPECT_EQ(RemoveLast(conv, L"Software\\X\\Y\\", 1), Removed(1, L"Software\\X"));
    EXPECT_EQ(RemoveLast(conv, L"\\Software", 1), Removed(1, L"\\"));
    EXPECT_EQ(RemoveLast(conv, L"\\", 1), Removed(0, L"\\")) << "the root has nothing to remove";

    EXPECT_EQ(conv.GetLast(L""), L"");
    EXPECT_EQ(conv.GetLast(L"Software\\X\\"), L"X");
    EXPECT_EQ(conv.GetLast(L"Software"), L"Software");

    // The registry convention alone leaves an empty path alone and says yes.
    auto trailing = [&](std::wstring path, int mode) {
        const bool ok = conv.SetTrailingSeparator(path, mode);
        return Edit(ok, path);
    };
    EXPECT_EQ(trailing(L"", 3), Edit(true, L""));
    EXPECT_EQ(trailing(L"A", 1), Edit(true, L"A\\"));
    EXPECT_EQ(trailing(L"A\\", 2), Edit(true, L"A"));
}

TEST(PathConvention, GenericRulesWithPrefixAndWithoutRootMarker) {
    const PrefixedConvention conv;
    EXPECT_FALSE(conv.GetFlag());

    // Unlike the registry, an empty path cannot take a trailing separator or a name.
    std::wstring path;
    EXPECT_FALSE(conv.SetTrailingSeparator(path, 1));
    EXPECT_FALSE(conv.Append(path, L"name"));
    EXPECT_EQ(path, L"");

    const std::pair<const wchar_t*, int> kinds[] = {
        {L"dev:", 0}, {L"dev:sda", 4}, {L"dev:sda/dir/file", 3}, {L"/", 2}, {L"/usr/lib", 1}};
    for (const auto& [p, kind] : kinds) EXPECT_EQ(conv.Classify(p), kind) << p;
    EXPECT_EQ(conv.CountComponents(L"dev:sda"), 1);
    EXPECT_EQ(conv.CountComponents(L"dev:sda/dir/file"), 3);
    EXPECT_EQ(conv.CountComponents(L"dev:"), -1);
    EXPECT_EQ(Split(conv, L"dev:sda/dir/"), std::make_pair(true, Components{L"sda", L"dir"}));
    EXPECT_EQ(Split(conv, L"/"), std::make_pair(true, Components{L""}));
    // Removal stops at the prefix.
    EXPECT_EQ(RemoveLast(conv, L"dev:sda/dir/file", 10), Removed(2, L"dev:sda"));
    EXPECT_EQ(RemoveLast(conv, L"dev:sda", 1), Removed(0, L"dev:sda"));

    const BareConvention bare;
    EXPECT_EQ(bare.Classify(L"com"), 2);
    EXPECT_EQ(bare.Classify(L"www.example.com"), 1);
    EXPECT_EQ(bare.CountComponents(L"www.example.com."), 3);
    // No root marker to fall back to.
    EXPECT_EQ(RemoveLast(bare, L"www.example.com", 1), Removed(1, L"www.example"));
    EXPECT_EQ(RemoveLast(bare, L"a.b", 3), Removed(1, L"a"));
}
