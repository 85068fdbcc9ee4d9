#include "storages/XmlFile.h"

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlsave.h>
#include <libxml/xpath.h>

#include <climits>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string_view>

#include "foundation/Check.h"
#include "foundation/ExceptionsGuard.h"
#include "foundation/TextConversion.h"
#include "storages/NamedValue.h"
#include "storages/ResourceErrors.h"
#include "system/FileHelpers.h"

namespace FileSystem {
namespace {

constexpr char kOpenFailed[] = "Failed to open or parse the designated XML file";

// The files come from outside: never reach the network, never load a DTD or an external
// entity (no XML_PARSE_DTDLOAD, XML_PARSE_NOENT or XML_PARSE_DTDVALID), and report
// nothing on stderr; the caller learns of a failure from the result alone.
constexpr int kParseOptions = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;

void IgnoreError(void* /*userData*/, xmlErrorPtr /*error*/) {}

void InitializeLibrary() {
    static std::once_flag once;
    std::call_once(once, [] { xmlInitParser(); });
}

const xmlChar* Chars(const std::string& text) {
    return reinterpret_cast<const xmlChar*>(text.c_str());
}

std::string_view View(const xmlChar* text) {
    return text != nullptr ? std::string_view(reinterpret_cast<const char*>(text))
                           : std::string_view();
}

bool IsXmlSpace(char ch) {
    return ch == ' ' || ch == '\t' || ch == '\r' || ch == '\n';
}

std::string_view Trim(std::string_view text) {
    while (!text.empty() && IsXmlSpace(text.front())) text.remove_prefix(1);
    while (!text.empty() && IsXmlSpace(text.back())) text.remove_suffix(1);
    return text;
}

// "preserve" or "default" from the element's own xml:space, else what its parent has.
bool PreservesSpace(xmlNodePtr element, bool inherited) {
    for (xmlAttrPtr attribute = element->properties; attribute; attribute = attribute->next) {
        if (attribute->ns == nullptr || View(attribute->ns->prefix) != "xml" ||
            View(attribute->name) != "space")
            continue;
        xmlChar* value = xmlNodeGetContent(reinterpret_cast<xmlNodePtr>(attribute));
        const bool preserve = View(value) == "preserve";
        const bool reset = View(value) == "default";
        xmlFree(value);
        return preserve || (!reset && inherited);
    }
    return inherited;
}

// White-space-only text between elements is no node of the document as its readers see
// it, except where xml:space="preserve" keeps it. CDATA sections always stay.
void DropBlankText(xmlNodePtr parent, bool preserve) {
    for (xmlNodePtr child = parent->children; child != nullptr;) {
        xmlNodePtr next = child->next;
        if (child->type == XML_ELEMENT_NODE) {
            DropBlankText(child, PreservesSpace(child, preserve));
        } else if (child->type == XML_TEXT_NODE && !preserve && xmlIsBlankNode(child)) {
            xmlUnlinkNode(child);
            xmlFreeNode(child);
        }
        child = next;
    }
}

// The parsed document, or null when the file cannot be read or is not well-formed.
xmlDocPtr ParseFile(const std::wstring& path) {
    std::vector<uint8_t> bytes;
    if (!System::ReadWholeFile(path, bytes) || bytes.empty() || bytes.size() > INT_MAX)
        return nullptr;
    xmlParserCtxtPtr context = xmlNewParserCtxt();
    if (context == nullptr) return nullptr;
    context->sax->serror = IgnoreError;
    const std::string url = STLHelpers::WideToUtf8(path);
    xmlDocPtr document =
        xmlCtxtReadMemory(context, reinterpret_cast<const char*>(bytes.data()),
                          static_cast<int>(bytes.size()), url.c_str(), nullptr, kParseOptions);
    const bool wellFormed = context->wellFormed != 0;
    xmlFreeParserCtxt(context);
    if (document != nullptr && (!wellFormed || xmlDocGetRootElement(document) == nullptr)) {
        xmlFreeDoc(document);
        document = nullptr;
    }
    return document;
}

// The text of a subtree in document order. Text nodes are trimmed at the ends of the
// whole, CDATA sections never: `protectedBegin` and `protectedEnd` mark the span of text
// that came from CDATA.
struct TextCollector {
    void Add(xmlNodePtr node) {
        for (xmlNodePtr child = node; child != nullptr; child = child->next) {
            switch (child->type) {
                case XML_TEXT_NODE:
                    text += View(child->content);
                    break;
                case XML_CDATA_SECTION_NODE:
                    if (protectedBegin == std::string::npos) protectedBegin = text.size();
                    text += View(child->content);
                    protectedEnd = text.size();
                    break;
                case XML_ELEMENT_NODE:
                    Add(child->children);
                    break;
                case XML_ENTITY_REF_NODE:
                    // Only entities declared inside the document have content; external
                    // ones are never loaded.
                    if (const xmlEntityPtr entity = xmlGetDocEntity(child->doc, child->name);
                        entity != nullptr && entity->etype == XML_INTERNAL_GENERAL_ENTITY)
                        Add(entity->children);
                    break;
                default:
                    break;
            }
        }
    }
    std::wstring Result(bool preserve) const {
        if (preserve) return STLHelpers::Utf8ToWide(text);
        std::size_t begin = 0, end = text.size();
        while (begin < end && begin < protectedBegin && IsXmlSpace(text[begin])) ++begin;
        while (end > begin && end > protectedEnd && IsXmlSpace(text[end - 1])) --end;
        return STLHelpers::Utf8ToWide(std::string_view(text).substr(begin, end - begin));
    }

    std::string text;
    std::size_t protectedBegin = std::string::npos;
    std::size_t protectedEnd = 0;
};

bool SpacePreservedAt(xmlNodePtr node) {
    for (; node != nullptr; node = node->parent)
        if (node->type == XML_ELEMENT_NODE) return xmlNodeGetSpacePreserve(node) == 1;
    return false;
}

std::string QualifiedName(const xmlChar* name, xmlNsPtr ns) {
    std::string result;
    if (ns != nullptr && ns->prefix != nullptr) {
        result = View(ns->prefix);
        result += ':';
    }
    result += View(name);
    return result;
}

// The query the resource lookups make for every request, Element[@attribute="value"]
// relative to a section node, is answered by one walk over the children: the result is
// the XPath engine's (no-namespace names, the attribute's exact value, document order),
// without its cost per node. Any other text goes to the engine.
struct ChildByAttribute {
    std::string_view element;
    std::string_view attribute;
    std::string_view value;
};

bool IsNameStart(char ch) {
    return (ch >= 'A' && ch <= 'Z') || (ch >= 'a' && ch <= 'z') || ch == '_';
}

bool IsNameChar(char ch) {
    return IsNameStart(ch) || (ch >= '0' && ch <= '9') || ch == '-' || ch == '.';
}

// Takes a plain ASCII name off the front of `text`.
std::string_view TakeName(std::string_view& text) {
    if (text.empty() || !IsNameStart(text.front())) return {};
    std::size_t length = 1;
    while (length < text.size() && IsNameChar(text[length])) ++length;
    const std::string_view name = text.substr(0, length);
    text.remove_prefix(length);
    return name;
}

bool TakePrefix(std::string_view& text, std::string_view prefix) {
    if (!text.starts_with(prefix)) return false;
    text.remove_prefix(prefix.size());
    return true;
}

std::optional<ChildByAttribute> ParseChildByAttribute(std::string_view text) {
    ChildByAttribute query;
    query.element = TakeName(text);
    if (query.element.empty() || !TakePrefix(text, "[@")) return std::nullopt;
    query.attribute = TakeName(text);
    if (query.attribute.empty() || !TakePrefix(text, "=\"")) return std::nullopt;
    const std::size_t close = text.find('"');
    if (close == std::string_view::npos || text.substr(close) != "\"]") return std::nullopt;
    query.value = text.substr(0, close);
    return query;
}

bool HasAttributeValue(xmlNodePtr element, const ChildByAttribute& query) {
    for (xmlAttrPtr attribute = element->properties; attribute; attribute = attribute->next) {
        if (attribute->ns != nullptr || View(attribute->name) != query.attribute) continue;
        const xmlNodePtr content = attribute->children;
        if (content == nullptr) return query.value.empty();
        if (content->next == nullptr && content->type == XML_TEXT_NODE)
            return View(content->content) == query.value;
        xmlChar* value = xmlNodeListGetString(element->doc, content, 1);
        const bool equal = View(value) == query.value;
        xmlFree(value);
        return equal;
    }
    return false;
}

// Hands each matching child to `take` until it returns false.
template <class Take>
void FindChildren(xmlNodePtr context, const ChildByAttribute& query, Take&& take) {
    if (context->type != XML_ELEMENT_NODE && context->type != XML_DOCUMENT_NODE) return;
    for (xmlNodePtr child = context->children; child != nullptr; child = child->next) {
        if (child->type != XML_ELEMENT_NODE || child->ns != nullptr ||
            View(child->name) != query.element || !HasAttributeValue(child, query))
            continue;
        if (!take(child)) return;
    }
}

void ReportStorageError(XmlFile::Error* error, StorageSystem::StorageError code) {
    ResourceLib::ReportError(error, StorageSystem::MakeErrorCode(code));
}

}  // namespace

class XmlFile::Document {
public:
    explicit Document(xmlDocPtr document)
        : document(document), query(xmlXPathNewContext(document)) {
        // An XPath text that does not compile selects nothing, silently.
        if (query != nullptr) query->error = IgnoreError;
    }
    ~Document() {
        if (query != nullptr) xmlXPathFreeContext(query);
        xmlFreeDoc(document);
    }
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    xmlDocPtr document;
    xmlXPathContextPtr query;
};

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
    InitializeLibrary();
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
    xmlDocPtr parsed = ParseFile(path);
    if (parsed == nullptr) throw std::runtime_error(kOpenFailed);
    auto document = std::make_unique<Document>(parsed);
    if (document->query == nullptr) throw std::runtime_error(kOpenFailed);
    DropBlankText(reinterpret_cast<xmlNodePtr>(parsed), false);
    pDoc = std::move(document);
    pRoot = XmlNode(xmlDocGetRootElement(parsed));
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
    const std::string file = STLHelpers::WideToUtf8(bsPath);
    // Written in the document's own encoding, indented, since blank text was dropped.
    return xmlSaveFormatFile(file.c_str(), pDoc->document, 1) >= 0;
}

bool XmlFile::IsOpen() const {
    return pDoc != nullptr;
}

XmlNode XmlFile::GetRoot() const {
    return pRoot;
}

XmlNode XmlFile::SelectSingleNode(STLHelpers::litestring xpath) const {
    if (!pDoc) return {};
    return SelectSingleNode(XmlNode(pDoc->document), xpath);
}

XmlNode XmlFile::SelectSingleNode(XmlNode contextNode, STLHelpers::litestring xpath) const {
    std::vector<XmlNode> found;
    Select(contextNode, xpath, found, true);
    return found.empty() ? XmlNode() : found.front();
}

bool XmlFile::SelectNodes(std::vector<XmlNode>& result, STLHelpers::litestring xpath,
                          XmlNode contextNode) const {
    result.clear();
    return Select(contextNode, xpath, result, false);
}

bool XmlFile::Select(XmlNode contextNode, STLHelpers::litestring xpath, std::vector<XmlNode>& found,
                     bool firstOnly) const {
    if (!contextNode || !pDoc) return false;
    const xmlNodePtr context = static_cast<xmlNodePtr>(contextNode.handle);
    const std::string text = STLHelpers::WideToUtf8(xpath.view());
    if (const auto simple = ParseChildByAttribute(text)) {
        FindChildren(context, *simple, [&](xmlNodePtr child) {
            found.push_back(XmlNode(child));
            return !firstOnly;
        });
        return true;
    }
    xmlXPathContextPtr query = pDoc->query;
    query->node = context;
    xmlXPathObjectPtr result = xmlXPathEvalExpression(Chars(text), query);
    if (result == nullptr) return false;
    // A number, string or boolean is no node list.
    const bool isNodeList = result->type == XPATH_NODESET;
    if (isNodeList && result->nodesetval != nullptr) {
        for (int i = 0; i < result->nodesetval->nodeNr; ++i) {
            xmlNodePtr node = result->nodesetval->nodeTab[i];
            // Namespace nodes are copies that live only as long as the result.
            if (node == nullptr || node->type == XML_NAMESPACE_DECL) continue;
            found.push_back(XmlNode(node));
            if (firstOnly) break;
        }
    }
    xmlXPathFreeObject(result);
    return isNodeList;
}

bool XmlFile::GetChildNodes(XmlNode node, std::vector<XmlNode>& result) const {
    result.clear();
    xmlNodePtr parent = static_cast<xmlNodePtr>(node.handle);
    if (parent == nullptr) return true;
    switch (parent->type) {
        case XML_ELEMENT_NODE:
        case XML_ATTRIBUTE_NODE:
        case XML_DOCUMENT_NODE:
        case XML_DOCUMENT_FRAG_NODE:
            for (xmlNodePtr child = parent->children; child != nullptr; child = child->next)
                result.push_back(XmlNode(child));
            break;
        default:
            break;  // the children of an entity reference are the entity's, not its own
    }
    return true;
}

std::wstring XmlFile::GetNodeName(XmlNode node) const {
    const xmlNodePtr native = static_cast<xmlNodePtr>(node.handle);
    if (native == nullptr) throw std::runtime_error("Invalid node");
    switch (native->type) {
        case XML_ELEMENT_NODE:
        case XML_ATTRIBUTE_NODE:
            return STLHelpers::Utf8ToWide(QualifiedName(native->name, native->ns));
        case XML_TEXT_NODE:
            return L"#text";
        case XML_CDATA_SECTION_NODE:
            return L"#cdata-section";
        case XML_COMMENT_NODE:
            return L"#comment";
        case XML_DOCUMENT_NODE:
        case XML_HTML_DOCUMENT_NODE:
            return L"#document";
        case XML_DOCUMENT_FRAG_NODE:
            return L"#document-fragment";
        default:
            return STLHelpers::Utf8ToWide(View(native->name));
    }
}

bool XmlFile::IsElement(XmlNode node) const {
    const xmlNodePtr native = static_cast<xmlNodePtr>(node.handle);
    return native != nullptr && native->type == XML_ELEMENT_NODE;
}

std::wstring XmlFile::GetAttribute(XmlNode node, STLHelpers::litestring name, Error* error) const {
    const xmlNodePtr element = static_cast<xmlNodePtr>(node.handle);
    if (element == nullptr) {
        ReportStorageError(error, StorageSystem::NullPointer);
        return {};
    }
    const std::string wanted = STLHelpers::WideToUtf8(name.view());
    if (element->type == XML_ELEMENT_NODE) {
        for (xmlAttrPtr attribute = element->properties; attribute; attribute = attribute->next) {
            if (QualifiedName(attribute->name, attribute->ns) != wanted) continue;
            // An attribute's text is its value without surrounding white space.
            xmlChar* value = xmlNodeGetContent(reinterpret_cast<xmlNodePtr>(attribute));
            std::wstring text = STLHelpers::Utf8ToWide(Trim(View(value)));
            xmlFree(value);
            return text;
        }
    }
    ReportStorageError(error, StorageSystem::ItemNotFound);
    return {};
}

std::wstring XmlFile::GetAttributeOr(XmlNode node, STLHelpers::litestring name,
                                     STLHelpers::litestring defaultValue) const {
    Error error;
    std::wstring value = GetAttribute(node, name, &error);
    return error ? defaultValue.str() : value;
}

std::wstring XmlFile::GetText(XmlNode node, Error* error) const {
    const xmlNodePtr native = static_cast<xmlNodePtr>(node.handle);
    if (native == nullptr) {
        ReportStorageError(error, StorageSystem::NullPointer);
        return {};
    }
    TextCollector collector;
    switch (native->type) {
        case XML_ELEMENT_NODE:
        case XML_DOCUMENT_NODE:
            collector.Add(native->children);
            return collector.Result(SpacePreservedAt(native));
        case XML_ATTRIBUTE_NODE: {
            xmlChar* value = xmlNodeGetContent(native);
            std::wstring text = STLHelpers::Utf8ToWide(Trim(View(value)));
            xmlFree(value);
            return text;
        }
        case XML_CDATA_SECTION_NODE:
            return STLHelpers::Utf8ToWide(View(native->content));
        default:
            collector.text = View(native->content);
            return collector.Result(SpacePreservedAt(native->parent));
    }
}

}  // namespace FileSystem
