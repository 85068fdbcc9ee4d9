#include "system/PathConvention.h"

#include <utility>

namespace FileSystem {

PathConventionRules::PathConventionRules(PathConventionSettings settings)
    : settings_(std::move(settings)) {}

bool PathConventionRules::EndsWithSeparator(std::wstring_view path) const {
    return !settings_.separator.empty() && path.ends_with(settings_.separator);
}

std::wstring_view PathConventionRules::WithoutTrailingSeparator(std::wstring_view path) const {
    if (EndsWithSeparator(path) && path.size() > settings_.separator.size())
        path.remove_suffix(settings_.separator.size());
    return path;
}

bool PathConventionRules::Append(std::wstring& path, std::wstring_view name) const {
    if (!SetTrailingSeparator(path, 1)) return false;
    path.append(name);
    return true;
}

bool PathConventionRules::SetTrailingSeparator(std::wstring& path, int mode) const {
    if (path.empty()) return false;
    const bool ends = EndsWithSeparator(path);
    if ((mode & 1) != 0 && !ends) path.append(settings_.separator);
    if ((mode & 2) != 0 && ends) path.resize(path.size() - settings_.separator.size());
    return true;
}

int PathConventionRules::Classify(std::wstring_view path) const {
    if (path.empty() || !IsValid(path)) return 0;
    path = WithoutTrailingSeparator(path);
    const auto& prefix = settings_.prefix;
    const auto& separator = settings_.separator;
    if (!prefix.empty() && path.starts_with(prefix)) {
        if (path.size() == prefix.size()) return 0;
        return path.find(separator, prefix.size()) != std::wstring_view::npos ? 3 : 4;
    }
    if (!settings_.rootMarker.empty()) return path == settings_.rootMarker ? 2 : 1;
    return path.find(separator) == std::wstring_view::npos ? 2 : 1;
}

int PathConventionRules::CountComponents(std::wstring_view path) const {
    path = WithoutTrailingSeparator(path);
    const int kind = Classify(path);
    if (kind == 0) return -1;
    if (kind == 2 || kind == 4) return 1;
    int count = 1;
    const size_t start = kind == 3 ? settings_.prefix.size() : 0;
    if (settings_.separator.empty()) return count;
    for (size_t pos = path.find(settings_.separator, start + 1); pos != std::wstring_view::npos;
         pos = path.find(settings_.separator, pos + settings_.separator.size()))
        ++count;
    return count;
}

bool PathConventionRules::Split(std::wstring_view path,
                                std::vector<std::wstring>& components) const {
    components.clear();
    path = WithoutTrailingSeparator(path);
    const int kind = Classify(path);
    if (kind == 0) return false;
    size_t pos = 0;
    if (kind == 3 || kind == 4) pos = settings_.prefix.size();
    if (kind == 2) pos = settings_.rootMarker.size();
    const auto& separator = settings_.separator;
    while (true) {
        const size_t next = separator.empty() ? std::wstring_view::npos : path.find(separator, pos);
        if (next == std::wstring_view::npos) {
            components.emplace_back(path.substr(std::min(pos, path.size())));
            break;
        }
        components.emplace_back(path.substr(pos, next - pos));
        pos = next + separator.size();
    }
    return true;
}

std::wstring PathConventionRules::GetLast(std::wstring_view path) const {
    if (path.empty()) return {};
    path = WithoutTrailingSeparator(path);
    const size_t last =
        settings_.separator.empty() ? std::wstring_view::npos : path.rfind(settings_.separator);
    if (last == std::wstring_view::npos) return std::wstring(path);
    return std::wstring(path.substr(last + settings_.separator.size()));
}

int PathConventionRules::RemoveLast(std::wstring& path, int count) const {
    const std::wstring_view trimmed = WithoutTrailingSeparator(path);
    const int kind = Classify(trimmed);
    if (kind == 0 || kind == 2 || kind == 4 || settings_.separator.empty()) return 0;
    const size_t limit = kind == 3 ? settings_.prefix.size() : 0;

    size_t cut = std::wstring_view::npos;
    int removed = 0;
    size_t searchEnd = trimmed.size();
    while (removed < count && searchEnd > 0) {
        const size_t found = trimmed.rfind(settings_.separator, searchEnd - 1);
        if (found == std::wstring_view::npos) break;
        if (limit != 0 && found <= limit) break;
        cut = found;
        ++removed;
        searchEnd = found;
    }
    if (cut == std::wstring_view::npos) return 0;
    path.resize(cut);
    if (path.empty() && kind == 1 && !settings_.rootMarker.empty()) path = settings_.rootMarker;
    return removed;
}

}  // namespace FileSystem
