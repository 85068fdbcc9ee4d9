// The normalisation GetFilePath applies to the paths storages record: ".." steps are folded
// into the folder before them, "\" becomes "/", and one trailing "/" goes.
//
// Thread safety: a pure function; any thread.
#pragma once

#include <string>

namespace ResourceLib::internal {

// Normalises `path` as above. Both "\" and "/" count as separators while ".." is folded.
// A ".." that starts within the first four characters, or that does not follow a
// separator, cannot be folded safely: the path is then returned exactly as given, with no
// step applied at all. Never fails.
std::wstring NormalizeResourcePath(const std::wstring& path);

}  // namespace ResourceLib::internal
