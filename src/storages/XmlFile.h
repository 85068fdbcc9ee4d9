// FileSystem::XmlFile: the system's one way to read an XML file. The whole document is
// loaded at Open by a conforming XML 1.0 parser (well-formedness is checked, the declared
// encoding is honoured); queries are XPath 1.0, run on the document or relative to a
// node, and texts come back as wide strings. Missing data is reported with the
// storage-system error codes (NullPointer for a missing node, ItemNotFound for a missing
// attribute or text).
//
// The files are outside input: no DTD and no external entity is ever loaded, from the
// network or from disk. White-space-only text between elements is dropped at load unless
// xml:space="preserve" applies, so it is no child and no query result.
//
// The records of the Windows original (COM apartment, pinned XML libraries) have no work
// to do here, but the process-wide values "defaultCOMModel" and "xmlFileInstanceCount"
// keep their meaning: every XmlFile reads the first and counts itself in the second.
//
// Errors: Open (and the opening constructor) throw std::runtime_error "Failed to open or
// parse the designated XML file"; GetNodeName throws std::runtime_error "Invalid node" for
// a null node; GetAttribute and GetText follow the optional-pointer convention of
// ResourceErrors.h with StorageSystem codes. Queries that fail give null or false.
//
// Thread safety: one object is used by one thread, the one that built it. Nodes stay
// valid until the file is closed or re-opened.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <boost/system/error_code.hpp>

#include "foundation/ErrorCode.h"
#include "foundation/LiteString.h"

namespace FileSystem {

class XmlFile;

// A node of an open document (an element, attribute, text, comment, ... or the document
// itself); a default-constructed (null) node stands for "none".
class XmlNode {
public:
    XmlNode() = default;
    explicit operator bool() const { return handle != nullptr; }
    friend bool operator==(XmlNode, XmlNode) = default;

private:
    friend class XmlFile;
    explicit XmlNode(void* handle) : handle(handle) {}
    void* handle = nullptr;
};

class XmlFile {
public:
    using Error = boost::system::error_code;

    // Builds, then opens `path`; throws as Open().
    XmlFile(const std::wstring& path, bool saveOnClose);
    // Builds with an empty path and opens nothing.
    explicit XmlFile(bool saveOnClose);
    XmlFile(const XmlFile&) = delete;
    XmlFile& operator=(const XmlFile&) = delete;
    ~XmlFile();

    void Open(const std::wstring& path, bool saveOnClose);
    void Open();
    // Saves first when asked to; false when nothing was open.
    bool Close();
    // Writes the document to `path`, or to the file's own path when `path` is empty.
    bool Save(const std::wstring& path);
    bool IsOpen() const;

    XmlNode SelectSingleNode(STLHelpers::litestring xpath) const;
    XmlNode SelectSingleNode(XmlNode contextNode, STLHelpers::litestring xpath) const;
    bool SelectNodes(std::vector<XmlNode>& result, STLHelpers::litestring xpath,
                     XmlNode contextNode) const;
    // Always true; a failure gives an empty list.
    bool GetChildNodes(XmlNode node, std::vector<XmlNode>& result) const;
    // The element's or attribute's qualified name, a processing instruction's target, or
    // "#text", "#cdata-section", "#comment", "#document".
    std::wstring GetNodeName(XmlNode node) const;
    // True for an element; false for any other kind of node and for null.
    bool IsElement(XmlNode node) const;
    std::wstring GetAttribute(XmlNode node, STLHelpers::litestring name,
                              Error* error = nullptr) const;
    std::wstring GetAttributeOr(XmlNode node, STLHelpers::litestring name,
                                STLHelpers::litestring defaultValue) const;
    // The text of the node and all its descendants; white space at both ends is dropped
    // unless it lies in a CDATA section or xml:space="preserve" applies.
    std::wstring GetText(XmlNode node, Error* error = nullptr) const;

    // The document element; null when closed.
    XmlNode GetRoot() const;
    const std::wstring& GetPath() const { return path; }

private:
    // The COM initialisation the building thread would need elsewhere. Here it always
    // succeeds; the record keeps the model asked for, checked like everywhere else.
    struct ComApartment {
        void Initialize(int32_t model);
        int32_t requestedModel = 0;
        int32_t usedModel = 0;
        ErrorCode result{E_FAIL};
    };
    // The parsed document and its query context.
    class Document;

    void Build();
    // Appends what the query finds (only the first node when `firstOnly`); false when the
    // query fails or gives no node list.
    bool Select(XmlNode contextNode, STLHelpers::litestring xpath, std::vector<XmlNode>& found,
                bool firstOnly) const;

    std::wstring path;
    ComApartment com;
    std::unique_ptr<Document> pDoc;
    XmlNode pRoot;
    bool saveOnClose = false;
};

}  // namespace FileSystem
