#include "storages/XmlFile.h"

#include <stdexcept>

#include "foundation/Check.h"
#include "foundation/ExceptionsGuard.h"
#include "foundation/TextConversion.h"
#include "storages/NamedValue.h"
#include "storages/ResourceErrors.h"

namespace FileSystem {
namespace {

constexpr char kOpenFailed[] = "Failed to open or parse the designated XML file";

// Comments and processing instructions are nodes of the document as its readers list
// them; white-space-only text between elements is not, as in the reader this replaces.
constexpr unsigned kParseOptions =
    pugi::parse_default | pugi::parse_comments | pugi::parse_pi | pugi::parse_declaration;

bool IsXmlSpace(char ch) {
    return ch == ' ' || ch == '\t' || ch == '\r' || ch == '\n';
}

bool SpacePreserved(XmlNode scope) {
    for (XmlNode node = scope; node; node = node.parent()) {
        const pugi::xml_attribute space = node.attribute("xml:space");
        if (space) return std::string_view(space.value()) == "preserve";
    }
    return false;
}

std::string Trim(std::string text) {
    std::size_t begin = 0, end = text.size();
    while (begin < end && IsXmlSpace(text[begin])) ++begin;
    while (end > begin && IsXmlSpace(text[end - 1])) --end;
    return text.substr(begin, end - begin);
}

// The text of text and CDATA nodes in the subtree, in document order.
void CollectText(XmlNode node, std::string& out) {
    for (XmlNode child = node.first_child(); child; child = child.next_sibling()) {
        if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata)
            out += child.value();
        else if (child.type() == pugi::node_element)
            CollectText(child, out);
    }
}

std::string Utf8(STLHelpers::litestring text) {
    return STLHelpers::WideToUtf8(text.view());
}

// An XPath text that does not compile selects nothing, like a query that fails.
template <class Query>
auto RunQuery(Query&& query) -> decltype(query()) {
    try {
        return query();
    } catch (const pugi::xpath_exception&) {
        return {};
    }
}

void ReportStorageError(XmlFile::Error* error, StorageSystem::StorageError code) {
    ResourceLib::ReportError(error, StorageSystem::MakeErrorCode(code));
}

}  // namespace

void XmlFile::ComApartment::Initialize(int32_t model) {
    requestedModel = model;
    usedModel = model;
    result = ErrorCode(S_OK);
}

XmlFile::XmlFile(const std::wstring& path, bool saveOnClose) : path(path) {
    Build();
    this->saveOnClose = saveOnClose;
    Open();
    if (StorageSystem::SharedNumber* count = StorageSystem::XmlFileInstanceCount())
        count->Increment();
}

XmlFile::XmlFile(bool saveOnClose) {
    Build();
    this->saveOnClose = saveOnClose;
    if (StorageSystem::SharedNumber* count = StorageSystem::XmlFileInstanceCount())
        count->Increment();
}

void XmlFile::Build() {
    const StorageSystem::SharedNumber* defaultModel = StorageSystem::DefaultCOMModel();
    int32_t model = defaultModel != nullptr ? defaultModel->Read() : 2;
    if (model < 0 || model > 2) model = 0;
    com.Initialize(model);
}

XmlFile::~XmlFile() {
    if (StorageSystem::SharedNumber* count = StorageSystem::XmlFileInstanceCount())
        count->Decrement();
    Close();
}

void XmlFile::Open(const std::wstring& newPath, bool newSaveOnClose) {
    saveOnClose = newSaveOnClose;
    path = newPath;
    Open();
}

void XmlFile::Open() {
    Close();
    auto document = std::make_unique<pugi::xml_document>();
    const pugi::xml_parse_result parsed =
        document->load_file(STLHelpers::WideToUtf8(path).c_str(), kParseOptions);
    const XmlNode root = parsed ? document->document_element() : XmlNode();
    if (!root) throw std::runtime_error(kOpenFailed);
    pDoc = std::move(document);
    pRoot = root;
}

bool XmlFile::Close() {
    if (!pRoot && !pDoc) return false;
    if (saveOnClose) (void)ErrorHandling::ClassifiedExceptionsGuard([&]() { Save(L""); });
    pRoot = XmlNode();
    pDoc.reset();
    return true;
}

bool XmlFile::Save(const std::wstring& target) {
    if (!pRoot && !pDoc) return false;
    const std::wstring& chosen = target.empty() ? path : target;
    const wchar_t* bsPath = chosen.empty() ? nullptr : chosen.c_str();
    if (CHECK_GUARDED(bsPath).Failed()) return false;
    return pDoc->save_file(STLHelpers::WideToUtf8(bsPath).c_str(), "\t", pugi::format_default,
                           pugi::encoding_utf8);
}

bool XmlFile::IsOpen() const {
    return pDoc != nullptr;
}

XmlNode XmlFile::GetRoot() const {
    return pRoot;
}

XmlNode XmlFile::SelectSingleNode(STLHelpers::litestring xpath) const {
    if (!pDoc) return {};
    return RunQuery([&]() { return pDoc->select_node(Utf8(xpath).c_str()).node(); });
}

XmlNode XmlFile::SelectSingleNode(XmlNode contextNode, STLHelpers::litestring xpath) const {
    if (!contextNode) return {};
    return RunQuery([&]() { return contextNode.select_node(Utf8(xpath).c_str()).node(); });
}

bool XmlFile::SelectNodes(std::vector<XmlNode>& result, STLHelpers::litestring xpath,
                          XmlNode contextNode) const {
    result.clear();
    if (!contextNode) return false;
    try {
        // Attributes selected by the query are no nodes of this interface: skipped.
        for (const pugi::xpath_node& found : contextNode.select_nodes(Utf8(xpath).c_str()))
            if (found.node()) result.push_back(found.node());
    } catch (const pugi::xpath_exception&) {
        result.clear();
        return false;
    }
    return true;
}

bool XmlFile::GetChildNodes(XmlNode node, std::vector<XmlNode>& result) const {
    result.clear();
    for (XmlNode child = node.first_child(); child; child = child.next_sibling())
        result.push_back(child);
    return true;
}

std::wstring XmlFile::GetNodeName(XmlNode node) const {
    switch (node.type()) {
        case pugi::node_null:
            throw std::runtime_error("Invalid node");
        case pugi::node_document:
            return L"#document";
        case pugi::node_pcdata:
            return L"#text";
        case pugi::node_cdata:
            return L"#cdata-section";
        case pugi::node_comment:
            return L"#comment";
        default:
            return STLHelpers::Utf8ToWide(node.name());
    }
}

std::wstring XmlFile::GetAttribute(XmlNode node, STLHelpers::litestring name, Error* error) const {
    if (!node) {
        ReportStorageError(error, StorageSystem::NullPointer);
        return {};
    }
    const pugi::xml_attribute attribute = node.attribute(Utf8(name).c_str());
    if (!attribute) {
        ReportStorageError(error, StorageSystem::ItemNotFound);
        return {};
    }
    // An attribute's text is its value without surrounding white space.
    return STLHelpers::Utf8ToWide(Trim(attribute.value()));
}

std::wstring XmlFile::GetAttributeOr(XmlNode node, STLHelpers::litestring name,
                                     STLHelpers::litestring defaultValue) const {
    Error error;
    std::wstring value = GetAttribute(node, name, &error);
    return error ? defaultValue.str() : value;
}

std::wstring XmlFile::GetText(XmlNode node, Error* error) const {
    switch (node.type()) {
        case pugi::node_null:
            ReportStorageError(error, StorageSystem::NullPointer);
            return {};
        case pugi::node_element:
        case pugi::node_document: {
            std::string text;
            CollectText(node, text);
            return TrimUnlessPreserved(std::move(text), node);
        }
        default:
            return TrimUnlessPreserved(node.value(), node.parent());
    }
}

std::wstring XmlFile::TrimUnlessPreserved(std::string text, XmlNode scope) {
    return STLHelpers::Utf8ToWide(SpacePreserved(scope) ? text : Trim(std::move(text)));
}

}  // namespace FileSystem
