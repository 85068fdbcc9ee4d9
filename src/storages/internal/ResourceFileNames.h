// Where the file-based storages look for resources. A resources directory holds a
// "Common" folder and one folder per language, each with one folder per skin:
//   <directory>/<language>/<skin>   <directory>/Common/<skin>
//   <directory>/<language>          <directory>/Common
// searched in that order, most specific first. A resource named "buttons__ok" (or
// "buttons/ok") of type Bitmap is the file "buttons/ok.bmp" below one of them.
//
// Thread safety: pure functions. Nothing here throws except std::bad_alloc.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "storages/ILanguage.h"

namespace ResourceLib::internal {

// The name of the language or skin, "" when none is set.
std::wstring NameOf(const LanguagePtr& language);
std::wstring NameOf(const SkinPtr& skin);

// `name` below `folder`, with exactly one "/" between them; `name` alone for an empty
// folder.
std::wstring JoinPath(std::wstring_view folder, std::wstring_view name);

// The candidate folders in search order, for a language and a skin name ("" when not
// set). They need not exist.
std::vector<std::wstring> CandidateFolders(std::wstring_view directory, std::wstring_view language,
                                           std::wstring_view skin);

// <directory>/Common/<skin>; "" when no skin is set.
std::wstring SkinFolder(std::wstring_view directory, std::wstring_view skin);

// ".bmp" for Bitmap, ".ico" for Icon, ".bin" for Binary; "" for any other type.
std::wstring_view ResourceFileExtension(uint32_t type);

// The relative file of a resource: its name with the type's extension, "__" and "/" (and,
// as in resource files written on Windows, "\") standing for the folder separator.
std::wstring ResourceFileName(std::wstring_view name, uint32_t type);

}  // namespace ResourceLib::internal
