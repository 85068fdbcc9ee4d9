// Path conventions: how a kind of path (registry paths, file paths) is split into
// components, joined and shortened, driven by a few settings: the separator, the text that
// alone stands for the root, and an optional prefix after which components start.
//
// Path kinds reported by Classify:
//   0  empty, invalid, or equal to the prefix
//   1  an ordinary path
//   2  the root (equal to the root marker; with an empty marker, a path without separator)
//   3  starts with the prefix and has a separator after it
//   4  starts with the prefix and has no separator after it
//
// Conventions hold only constant settings after construction; each user builds its own.
// Nothing here throws except std::bad_alloc.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace FileSystem {

struct IPathConvention {
    virtual ~IPathConvention() = default;
    // Ensures `path` ends with the separator (as SetTrailingSeparator mode 1), then appends
    // `name`. False, with nothing appended, when that first step fails.
    virtual bool Append(std::wstring& path, std::wstring_view name) const = 0;
    // Removes up to `count` trailing components; returns how many it removed.
    virtual int RemoveLast(std::wstring& path, int count) const = 0;
    // The last component.
    virtual std::wstring GetLast(std::wstring_view path) const = 0;
    // Mode bit 1 adds the separator when missing; mode bit 2 removes one trailing separator.
    virtual bool SetTrailingSeparator(std::wstring& path, int mode) const = 0;
    virtual int Classify(std::wstring_view path) const = 0;
    virtual bool GetFlag() const = 0;
    // -1 for kind 0.
    virtual int CountComponents(std::wstring_view path) const = 0;
    // Empty components between doubled separators are kept. False for kind 0.
    virtual bool Split(std::wstring_view path, std::vector<std::wstring>& components) const = 0;
    virtual bool IsValid(std::wstring_view path) const = 0;
};

struct PathConventionSettings {
    std::wstring separator;
    std::wstring rootMarker;
    std::wstring prefix;
    bool flag = true;
};

// The rules shared by every settings-driven convention. Returns false from
// SetTrailingSeparator for an empty path, so Append to an empty path fails here.
class PathConventionRules : public IPathConvention {
public:
    explicit PathConventionRules(PathConventionSettings settings);

    bool Append(std::wstring& path, std::wstring_view name) const override;
    int RemoveLast(std::wstring& path, int count) const override;
    std::wstring GetLast(std::wstring_view path) const override;
    bool SetTrailingSeparator(std::wstring& path, int mode) const override;
    int Classify(std::wstring_view path) const override;
    bool GetFlag() const override { return settings_.flag; }
    int CountComponents(std::wstring_view path) const override;
    bool Split(std::wstring_view path, std::vector<std::wstring>& components) const override;
    bool IsValid(std::wstring_view) const override { return true; }

    const PathConventionSettings& Settings() const { return settings_; }

private:
    // `path` without one trailing separator; a path that is nothing but the separator
    // stays whole, so that the root keeps its kind.
    std::wstring_view WithoutTrailingSeparator(std::wstring_view path) const;
    bool EndsWithSeparator(std::wstring_view path) const;

    PathConventionSettings settings_;
};

// A convention type of its own for each kind of path (`Derived` names it), so that
// conventions are not mixed up by accident; Derived may override single operations.
template <class Derived>
class SimplePathConventionImpl : public PathConventionRules {
public:
    using PathConventionRules::PathConventionRules;
};

}  // namespace FileSystem
