// Moving files to the freedesktop.org trash: the home trash ($XDG_DATA_HOME/Trash, default
// ~/.local/share/Trash) when the file lies on the same file system, else the trash folder
// "$topdir/.Trash-$uid" of the file's mount point. Nothing is ever deleted here: a file that
// cannot be moved stays where it is.
#pragma once

#include <cstdint>
#include <string>

namespace System::internal {

// Moves `path` (a file, link or folder; UTF-8) to the trash with its .trashinfo record.
// Returns 0 or a Win32 error (2 when `path` does not exist, 17 (ERROR_NOT_SAME_DEVICE) when
// no trash on its file system can take it).
uint32_t MoveToTrash(const std::string& path);

// The home trash folder (without trailing "/").
std::string HomeTrashFolder();

}  // namespace System::internal
