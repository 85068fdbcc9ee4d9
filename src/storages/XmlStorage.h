// ResourceLib::XmlStorage: resources described in Resources.xml files. Strings, colours,
// fonts, integers and file paths are written in the XML itself; bitmaps, icons and binary
// blobs lie in files that the XML names, and bitmaps may also be gradients painted from a
// description. A resources directory holds one Resources.xml per language and skin
// folder (see internal/ResourceFileNames.h); those that exist for the manager's current
// language and skin are loaded and searched from the most specific to "Common".
//
// Errors: the loaders follow StorageBase. A name nobody defines, or whose every
// definition fails to convert, gives ResourceNotFound; a request by id without any loaded
// file gives InvalidStorageState. Reload lets two exceptions leave the request: a
// malformed file (std::runtime_error "Failed to open or parse the designated XML file")
// and a file without "ResourceLib/Resources" (std::runtime_error "Invalid resource XML
// format"); the files loaded before that one stay in use for the later requests.
//
// Thread safety: used by one manager, from the thread that runs the GUI session (fonts
// and bitmaps are made here); the XML files belong to the thread that loaded them.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "storages/StorageBase.h"
#include "storages/XmlFile.h"

namespace ResourceLib {

class XmlStorage : public StorageBase {
public:
    // Nothing is read before the first request.
    explicit XmlStorage(std::wstring directory);

    void GetSupportedTypes(uint32_t& mask, Error* error = nullptr) override;
    bool IsAvailable(Error* error = nullptr) override;

protected:
    bool Reload(Error* error) override;
    std::wstring LoadStringByName(ResourceName name, Error* error) override;
    std::wstring LoadStringById(int32_t id, Error* error) override;
    BitmapHandle LoadBitmapByName(ResourceName name, bool premultiplyAlpha, Error* error) override;
    BitmapHandle LoadBitmapById(int32_t id, bool premultiplyAlpha, Error* error) override;
    IconHandle LoadIconByName(ResourceName name, int32_t width, int32_t height,
                              Error* error) override;
    IconHandle LoadIconById(int32_t id, int32_t width, int32_t height, Error* error) override;
    void LoadBinaryByName(ResourceName name, std::vector<uint8_t>& data, Error* error) override;
    void LoadBinaryById(int32_t id, std::vector<uint8_t>& data, Error* error) override;
    COLORREF LoadColorByName(ResourceName name, Error* error) override;
    COLORREF LoadColorById(int32_t id, Error* error) override;
    FontHandle LoadFontByName(ResourceName name, Error* error) override;
    FontHandle LoadFontById(int32_t id, Error* error) override;
    int32_t LoadIntegerByName(ResourceName name, Error* error) override;
    int32_t LoadIntegerById(int32_t id, Error* error) override;
    std::wstring LoadFilePath(int32_t id, uint32_t type, Error* error) override;

private:
    // One loaded Resources.xml and its "ResourceLib/Resources" element.
    struct Source {
        boost::shared_ptr<FileSystem::XmlFile> file;
        FileSystem::XmlNode section;
    };
    // Turns a found element into the requested resource; false when it does not convert,
    // and the search goes on with the next file.
    using Converter = std::function<bool(const Source& source, FileSystem::XmlNode element)>;

    // The first element `element` named `name`, in search order, that `convert` accepts.
    // Reports ResourceNotFound when there is none; otherwise returns the file it was in.
    const Source* FindResource(std::wstring_view element, ResourceName name,
                               const Converter& convert, Error* error) const;
    // The element's "value" attribute, else its text.
    static std::wstring ReadValue(const Source& source, FileSystem::XmlNode element);
    // The element's "path" attribute made usable: "{SkinDir}" expanded, else made absolute
    // against the folder of the element's file. False when there is no "path".
    bool ResolvePath(const Source& source, FileSystem::XmlNode element, std::wstring& path) const;
    // The gradient a "Bitmap" element describes; an empty holder when it describes none.
    static BitmapHandle PaintGradientBitmap(const Source& source, FileSystem::XmlNode element);
    // The registered name of `id` of `type`, for the ById loaders.
    std::wstring NameForId(int32_t id, uint32_t type, Error* error) const;

    std::wstring directory;
    std::vector<Source> sources;
};

}  // namespace ResourceLib
