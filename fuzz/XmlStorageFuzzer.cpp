// libFuzzer target for the XML storage: any bytes as the Resources.xml of a resources
// folder's "Common" part, with every resource the document names requested as each type,
// by name and by id, through a manager as the application does.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>

#include <boost/make_shared.hpp>

#include "FuzzSupport.h"
#include "resourcelib/ManagerImpl.h"
#include "storages/XmlStorage.h"
#include "graphics/GuiSession.h"

namespace {

using namespace ResourceLib;

// The values of name="..." and name='...' attributes in the raw text: the names worth
// asking for. A plain scan, so that it does not depend on the XML reader under test.
std::set<std::wstring> NamesIn(std::string_view text) {
    std::set<std::wstring> names;
    for (size_t at = text.find("name="); at != std::string_view::npos && names.size() < 24;
         at = text.find("name=", at + 5)) {
        const size_t open = at + 5;
        if (open >= text.size() || (text[open] != '"' && text[open] != '\'')) continue;
        const size_t close = text.find(text[open], open + 1);
        if (close == std::string_view::npos) break;
        names.insert(STLHelpers::Utf8ToWide(text.substr(open + 1, close - open - 1)));
    }
    return names;
}

// Files that never end or block when read whole: a document naming them is left to the
// other types, so that a run cannot hang.
bool NamesDeviceFiles(std::string_view text) {
    for (std::string_view place : {"/dev", "/proc", "/sys"})
        if (text.find(place) != std::string_view::npos) return true;
    return false;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    static CommonGuiLib::GuiSession session;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text = Fuzz::Bytes(data, size);
    const std::filesystem::path folder = Fuzz::ScratchFolder() / "resources";
    Fuzz::WriteFile(folder / "Common" / "Resources.xml", text);

    auto storage = boost::make_shared<XmlStorage>(Fuzz::Wide(folder));
    auto manager = boost::make_shared<ManagerImpl>();
    manager->AddStorage(storage);
    const bool files = !NamesDeviceFiles(text);
    IStorage::Error error;
    try {
        int32_t id = 1;
        for (const std::wstring& text : NamesIn(text)) {
            const ResourceName name(text.c_str(), static_cast<uint32_t>(text.size()));
            storage->GetString(name, &error);
            storage->GetColor(name, &error);
            storage->GetFont(name, &error);
            storage->GetInteger(name, &error);
            manager->RegisterResourceName(id, name, ResourceType_String);
            storage->GetFilePath(id, ResourceType_String, &error);
            if (files) {
                storage->GetBitmap(name, true, &error);
                storage->GetIcon(name, 16, 16, &error);
                storage->GetBinary(name, &error);
            }
            ++id;
        }
        storage->GetString(-1, &error);
    } catch (const std::runtime_error& e) {
        // A malformed document, or one without ResourceLib/Resources: the two exceptions a
        // request lets out by design. Anything else should have gone to `error`.
        if (!Fuzz::IsDocumentError(e)) Fuzz::Fail(e.what());
    }
    return 0;
}
