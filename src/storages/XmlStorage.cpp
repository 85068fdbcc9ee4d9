#include "storages/XmlStorage.h"

#include <algorithm>
#include <stdexcept>

#include <boost/make_shared.hpp>

#include "foundation/Check.h"
#include "graphics/Images.h"
#include "graphics/SystemMetrics.h"
#include "storages/ResourceErrors.h"
#include "storages/internal/ColorText.h"
#include "storages/internal/DecimalText.h"
#include "storages/internal/FontText.h"
#include "storages/internal/ResourceFileNames.h"
#include "system/FileHelpers.h"

namespace ResourceLib {

namespace {

constexpr wchar_t kResourcesFile[] = L"Resources.xml";
constexpr wchar_t kSectionQuery[] = L"ResourceLib/Resources";
constexpr std::wstring_view kSkinDirMarker = L"{SkinDir}";

ResourceName NameRef(const std::wstring& text) {
    return ResourceName(text.c_str(), static_cast<uint32_t>(text.size()));
}

// Resource files written on Windows separate folders with "\".
std::wstring WithSlashes(std::wstring path) {
    std::replace(path.begin(), path.end(), L'\\', L'/');
    return path;
}

void ReplaceAll(std::wstring& text, std::wstring_view from, std::wstring_view to) {
    for (std::size_t pos = text.find(from); pos != std::wstring::npos;
         pos = text.find(from, pos + to.size())) {
        text.replace(pos, from.size(), to);
    }
}

uint32_t OrientationOf(const std::wstring& text) {
    if (text == L"Vertical") return CommonGuiLib::Gradient_Vertical;
    if (text == L"DiagonalTLBR") return CommonGuiLib::Gradient_DiagonalTLBR;
    if (text == L"DiagonalTRBL") return CommonGuiLib::Gradient_DiagonalTRBL;
    return CommonGuiLib::Gradient_Horizontal;
}

}  // namespace

XmlStorage::XmlStorage(std::wstring directory) : directory(std::move(directory)) {}

void XmlStorage::GetSupportedTypes(uint32_t& mask, Error* /*error*/) {
    mask = kAllResourceTypes;
}

bool XmlStorage::IsAvailable(Error* /*error*/) {
    return true;
}

bool XmlStorage::Reload(Error* /*error*/) {
    // Files are added as they load: when one throws, the request fails, and those loaded
    // before it go on serving the later requests for this language and skin.
    sources.clear();
    const std::wstring language = internal::NameOf(GetCurrentLanguage());
    const std::wstring skin = internal::NameOf(GetCurrentSkin());
    for (const std::wstring& folder : internal::CandidateFolders(directory, language, skin)) {
        const std::wstring path = internal::JoinPath(folder, kResourcesFile);
        if (!System::FileExists(path)) continue;
        auto file = boost::make_shared<FileSystem::XmlFile>(true);
        file->Open(path, false);
        const FileSystem::XmlNode section = file->SelectSingleNode(kSectionQuery);
        if (!section) throw std::runtime_error("Invalid resource XML format");
        sources.push_back({file, section});
    }
    return !sources.empty();
}

const XmlStorage::Source* XmlStorage::FindResource(std::wstring_view element, ResourceName name,
                                                   const Converter& convert, Error* error) const {
    // Used as it stands: a name with a double quote makes a query that matches nothing.
    std::wstring query(element);
    query += L"[@name=\"";
    query += name.view();
    query += L"\"]";
    for (const Source& source : sources) {
        const FileSystem::XmlNode found =
            source.file->SelectSingleNode(source.section, NameRef(query));
        if (found && convert(source, found)) return &source;
    }
    ReportError(error, ResourceNotFound);
    return nullptr;
}

std::wstring XmlStorage::ReadValue(const Source& source, FileSystem::XmlNode element) {
    Error missing;
    std::wstring value = source.file->GetAttribute(element, L"value", &missing);
    if (!missing) return value;
    return source.file->GetText(element, &missing);
}

bool XmlStorage::ResolvePath(const Source& source, FileSystem::XmlNode element,
                             std::wstring& path) const {
    Error missing;
    std::wstring text = source.file->GetAttribute(element, L"path", &missing);
    if (missing) return false;
    if (text.find(kSkinDirMarker) != std::wstring::npos) {
        ReplaceAll(text, kSkinDirMarker,
                   internal::SkinFolder(directory, internal::NameOf(GetCurrentSkin())));
        path = WithSlashes(std::move(text));
    } else {
        path = System::MakeAbsolute(WithSlashes(std::move(text)), source.file->GetPath());
    }
    return true;
}

BitmapHandle XmlStorage::PaintGradientBitmap(const Source& source, FileSystem::XmlNode element) {
    const FileSystem::XmlFile& file = *source.file;
    if (file.GetAttributeOr(element, L"type", L"") != L"Gradient") return {};

    CommonGuiLib::GradientDescription gradient;
    gradient.orientation =
        OrientationOf(file.GetAttributeOr(element, L"orientation", L"Horizontal"));
    gradient.width = internal::DecimalOrZero(file.GetAttributeOr(element, L"width", L"0"));
    gradient.height = internal::DecimalOrZero(file.GetAttributeOr(element, L"height", L"0"));

    std::vector<FileSystem::XmlNode> pins;
    file.SelectNodes(pins, L"Pin", element);
    for (const FileSystem::XmlNode& pin : pins) {
        COLORREF color = 0;  // a pin without a readable colour is black
        internal::ParseColorText(file.GetAttributeOr(pin, L"color", L"0"), color);
        const double position = std::clamp(
            internal::DecimalOrZero(file.GetAttributeOr(pin, L"position", L"0")) / 100.0, 0.0, 1.0);
        // emplace keeps the stop already there: the first pin at a position wins.
        gradient.stops.emplace(
            position, CommonGuiLib::GradientColor{RedOf(color), GreenOf(color), BlueOf(color)});
    }

    BitmapHandle bitmap = CommonGuiLib::CreateCompatibleBitmap(gradient.width, gradient.height);
    if (!CommonGuiLib::HasHandle(bitmap)) return {};
    CommonGuiLib::PaintGradient(bitmap, 0, 0, gradient);
    // A new bitmap's alpha is 0; on a 32-bit screen that would make the gradient invisible.
    if (CommonGuiLib::GetScreenBitsPerPixel() == 32 &&
        CommonGuiLib::BitmapBitsPerPixel(bitmap) >= 32) {
        CommonGuiLib::SetOpaque(bitmap);
    }
    return bitmap;
}

std::wstring XmlStorage::NameForId(int32_t id, uint32_t type, Error* error) const {
    if (id < 0) {
        ReportError(error, InvalidResourceID);
        return {};
    }
    if (sources.empty() || !GetManager()) {
        ReportError(error, InvalidStorageState);
        return {};
    }
    return ResolveResourceName(id, type, error);
}

std::wstring XmlStorage::LoadStringByName(ResourceName name, Error* error) {
    std::wstring result;
    auto take = [&result](const Source& source, FileSystem::XmlNode element) {
        result = ReadValue(source, element);
        return true;
    };
    Error notLocalized;
    if (FindResource(L"String", name, take, &notLocalized)) return result;
    FindResource(L"UnlocalizedString", name, take, error);
    return result;
}

std::wstring XmlStorage::LoadStringById(int32_t id, Error* error) {
    const std::wstring name = NameForId(id, ResourceType_String, error);
    if (*error) return {};
    return LoadStringByName(NameRef(name), error);
}

BitmapHandle XmlStorage::LoadBitmapByName(ResourceName name, bool premultiplyAlpha, Error* error) {
    BitmapHandle bitmap;
    auto load = [this, &bitmap](const Source& source, FileSystem::XmlNode element) {
        std::wstring path;
        if (ResolvePath(source, element, path)) bitmap = CommonGuiLib::LoadBitmapFromFile(path);
        if (!CommonGuiLib::HasHandle(bitmap)) bitmap = PaintGradientBitmap(source, element);
        return CommonGuiLib::HasHandle(bitmap);
    };
    if (!FindResource(L"Bitmap", name, load, error)) return {};
    if (premultiplyAlpha) CommonGuiLib::PremultiplyAlpha(bitmap, false);
    return bitmap;
}

BitmapHandle XmlStorage::LoadBitmapById(int32_t id, bool premultiplyAlpha, Error* error) {
    const std::wstring name = NameForId(id, ResourceType_Bitmap, error);
    if (*error) return {};
    return LoadBitmapByName(NameRef(name), premultiplyAlpha, error);
}

IconHandle XmlStorage::LoadIconByName(ResourceName name, int32_t /*width*/, int32_t /*height*/,
                                      Error* error) {
    // Icons are loaded at the file's own size, whatever size was asked for.
    IconHandle icon;
    auto load = [this, &icon](const Source& source, FileSystem::XmlNode element) {
        std::wstring path;
        if (!ResolvePath(source, element, path)) return false;
        icon = CommonGuiLib::LoadIconFromFile(path, 0, 0);
        return CommonGuiLib::HasHandle(icon);
    };
    if (!FindResource(L"Icon", name, load, error)) return {};
    return icon;
}

IconHandle XmlStorage::LoadIconById(int32_t id, int32_t width, int32_t height, Error* error) {
    const std::wstring name = NameForId(id, ResourceType_Icon, error);
    if (*error) return {};
    return LoadIconByName(NameRef(name), width, height, error);
}

void XmlStorage::LoadBinaryByName(ResourceName name, std::vector<uint8_t>& data, Error* error) {
    auto load = [this, &data](const Source& source, FileSystem::XmlNode element) {
        std::wstring path;
        return ResolvePath(source, element, path) && System::ReadWholeFile(path, data);
    };
    if (!FindResource(L"Binary", name, load, error)) data.clear();
}

void XmlStorage::LoadBinaryById(int32_t id, std::vector<uint8_t>& data, Error* error) {
    const std::wstring name = NameForId(id, ResourceType_Binary, error);
    if (*error) return;
    LoadBinaryByName(NameRef(name), data, error);
}

COLORREF XmlStorage::LoadColorByName(ResourceName name, Error* error) {
    COLORREF color = 0;
    auto convert = [&color](const Source& source, FileSystem::XmlNode element) {
        return internal::ParseColorText(ReadValue(source, element), color);
    };
    return FindResource(L"Color", name, convert, error) ? color : 0;
}

COLORREF XmlStorage::LoadColorById(int32_t id, Error* error) {
    const std::wstring name = NameForId(id, ResourceType_Color, error);
    if (*error) return 0;
    return LoadColorByName(NameRef(name), error);
}

FontHandle XmlStorage::LoadFontByName(ResourceName name, Error* error) {
    FontHandle font;
    auto convert = [&font](const Source& source, FileSystem::XmlNode element) {
        font = internal::CreateFontFromText(ReadValue(source, element));
        return CommonGuiLib::HasHandle(font);
    };
    if (!FindResource(L"Font", name, convert, error)) return {};
    return font;
}

FontHandle XmlStorage::LoadFontById(int32_t id, Error* error) {
    const std::wstring name = NameForId(id, ResourceType_Font, error);
    if (*error) return {};
    return LoadFontByName(NameRef(name), error);
}

int32_t XmlStorage::LoadIntegerByName(ResourceName name, Error* error) {
    int32_t value = 0;
    // Text that is no integer ("12px") counts as 0, not as a failure.
    auto convert = [&value](const Source& source, FileSystem::XmlNode element) {
        value = internal::DecimalOrZero(ReadValue(source, element));
        return true;
    };
    return FindResource(L"Integer", name, convert, error) ? value : 0;
}

int32_t XmlStorage::LoadIntegerById(int32_t id, Error* error) {
    const std::wstring name = NameForId(id, ResourceType_Integer, error);
    if (*error) return 0;
    return LoadIntegerByName(NameRef(name), error);
}

std::wstring XmlStorage::LoadFilePath(int32_t id, uint32_t type, Error* error) {
    const std::wstring name = NameForId(id, type, error);
    if (*error) return {};
    std::wstring text;
    auto take = [&text](const Source& source, FileSystem::XmlNode element) {
        text = ReadValue(source, element);
        return true;
    };
    const Source* pFoundInSource = FindResource(L"FilePath", NameRef(name), take, error);
    if (*error) return {};
    CHECK_ERROR(pFoundInSource);
    // The path may be relative to any of the files, not only to the one that named it.
    text = WithSlashes(std::move(text));
    for (const Source& source : sources) {
        std::wstring path = System::MakeAbsolute(text, source.file->GetPath());
        if (System::FileExists(path)) return path;
    }
    ReportError(error, ResourceNotFound);
    return {};
}

}  // namespace ResourceLib
