// Shell operations: deleting files (permanently, or with undo into the freedesktop.org
// trash) and opening a document or web address with its associated program.
//
// Failures give false and are reported at level GuardedError, which never throws. The
// operations keep no state and may run on any thread; ShellOpen and OpenUrl wait for
// xdg-open to hand the document over.
#pragma once

#include <cstdint>
#include <string_view>

namespace System {

inline constexpr uint32_t FO_MOVE = 1;
inline constexpr uint32_t FO_COPY = 2;
inline constexpr uint32_t FO_DELETE = 3;
inline constexpr uint32_t FO_RENAME = 4;

inline constexpr int SW_SHOWNORMAL = 1;
inline constexpr int SW_SHOWMINIMIZED = 2;
inline constexpr int SW_SHOW = 5;

// Performs `function` on `from` (several paths may be given separated by '\0'): FO_DELETE
// removes them (files, links, whole folders; links are not followed) or, with `allowUndo`,
// moves them to the trash; FO_MOVE and FO_RENAME move them to `to`; FO_COPY copies them
// (folders recursively) to `to`. A failure is reported with the text "((shRes))" and gives
// false; a path that does not exist is a failure.
bool ShellFileOperation(uint32_t function, std::wstring_view from, std::wstring_view to,
                        bool allowUndo);

// ShellFileOperation(FO_DELETE, path, "", allowUndo).
bool DeleteWithShell(std::wstring_view path, bool allowUndo);

// Opens `file`: an executable file is started directly and detached, with `parameters`
// split by the Windows command-line rules; anything else (documents, folders, addresses
// such as "mailto:..." or "https://...", never taken for a file) goes to xdg-open, and
// succeeds when xdg-open reports success. Either program gets only descriptors 0, 1 and
// 2. False for an empty name, a missing xdg-open, or a document without a handler.
// `showCommand` has no effect here: window placement is the desktop's.
bool ShellOpen(std::wstring_view file, std::wstring_view parameters, int showCommand);

// Opens a web address with the user's browser (through xdg-open). An empty address is
// reported ("((!url.empty()))") and gives false without starting anything; a failed open
// is reported as "((res > 32))" with E_FAIL.
bool OpenUrl(std::wstring_view url);

}  // namespace System
