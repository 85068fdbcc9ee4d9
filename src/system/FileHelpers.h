// File and path helpers. File-system paths use "/" as separator; wide paths are converted
// to UTF-8 for the system calls.
//
// Every function returns a result and never throws for a system failure (std::bad_alloc
// may escape): queries give "" or their input unchanged, operations give false. Failures
// that the caller cannot see otherwise are reported at level GuardedError, which never
// throws. Thread safety: no state is kept; any thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace System {

// The folder part with its trailing "/": one trailing "/" is ignored, then the text up to
// and including the last "/". "" when there is none or it is the second character.
// "/tmp/setup.exe" gives "/tmp/"; "/tmp/" gives "/".
std::wstring GetLocation(std::wstring_view path);

// The part after the last separator, with one trailing "/" removed: "/a/b/" gives "b".
std::wstring GetFileName(std::wstring_view path);

// The path without the extension of its last component ("/a/b.tar.gz" gives "/a/b.tar");
// a path without extension comes back whole.
std::wstring RemoveExtension(std::wstring_view path);

// Whether a file, folder or link of that name exists (a dangling link counts).
bool FileExists(std::wstring_view path);

// "." and ".." components folded away and doubled "/" merged, by the text alone (links are
// not resolved); ".." above the root stays at the root. A result longer than PATH_MAX
// characters leaves the path unchanged.
std::wstring Canonicalize(std::wstring_view path);

// A relative `path` joined to `base` when that is a folder, else to GetLocation(base); a base
// that is itself relative counts from the current folder. The result is canonical.
std::wstring MakeAbsolute(std::wstring_view path, std::wstring_view base);

// The full path of the module that holds `addressInModule` (any address of its code or
// data); nullptr stands for the running executable. "" when it cannot be found.
std::wstring GetModulePath(const void* addressInModule = nullptr);

// GetLocation of the running executable's path, with its trailing "/".
std::wstring GetModuleFolder();

// $TMPDIR when it names a folder, else "/tmp/"; always with a trailing "/".
std::wstring GetTempFolder();

// The long form of `path`. Linux has no short names, so an existing path comes back as it
// is; for a path that does not exist the error is reported (GuardedError, "((lerr))") and
// `path` comes back unchanged.
std::wstring GetLongPath(std::wstring_view path);

// Makes every missing folder of `path`. True when `path` exists already or its last folder
// could be made (or appeared meanwhile); false otherwise, or for a path without "/" that
// does not exist.
bool CreateFolders(std::wstring_view path);

// The first path folder + pattern with every "!" replaced by 1, 2, 3, ... that does not exist
// ("!" is appended when the pattern has none). Stops at 99999999 and returns that
// candidate even when it exists.
std::wstring MakeUniqueFilePath(std::wstring_view folder, std::wstring_view pattern);

// Makes `name` usable as a file name: a reserved device name ("CON", "nul.txt", "COM1.log")
// gets "~" after the device word, characters below 32 and | \ ? * < " : > / become
// `replacement`, blanks, full stops, tabs, CR and LF are trimmed from both ends, and a name
// that ends up empty becomes `replacement` repeated to its untrimmed length.
void SanitizeFileName(std::wstring& name, wchar_t replacement);

// Reads the whole file into `bytes` (emptied first). False when the file cannot be opened or
// read (then `bytes` is empty). A file of size 0 gives true with no bytes.
bool ReadWholeFile(std::wstring_view path, std::vector<uint8_t>& bytes);

}  // namespace System
