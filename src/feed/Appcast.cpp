#include "feed/Appcast.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <climits>
#include <memory>
#include <mutex>

#include "feed/FeedDate.h"
#include "feed/internal/Text.h"

namespace Feed {
namespace {

// Never reach the network, never load a DTD or substitute entities; errors reach the caller
// as a result, not on stderr.
constexpr int kParseOptions = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;

void IgnoreError(void* /*userData*/, xmlErrorPtr /*error*/) {}

struct DocumentFree {
    void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};
using Document = std::unique_ptr<xmlDoc, DocumentFree>;

std::string_view View(const xmlChar* text) {
    return text != nullptr ? std::string_view(reinterpret_cast<const char*>(text))
                           : std::string_view();
}

bool Is(const xmlNode* node, std::string_view space, std::string_view name) {
    if (node->type != XML_ELEMENT_NODE || View(node->name) != name) return false;
    return space.empty() ? node->ns == nullptr || View(node->ns->href).empty()
                         : node->ns != nullptr && View(node->ns->href) == space;
}

const xmlNode* Child(const xmlNode* parent, std::string_view space, std::string_view name) {
    for (const xmlNode* child = parent->children; child != nullptr; child = child->next)
        if (Is(child, space, name)) return child;
    return nullptr;
}

std::string Text(const xmlNode* node) {
    if (node == nullptr) return {};
    xmlChar* content = xmlNodeGetContent(node);
    std::string text(View(content));
    xmlFree(content);
    return text;
}

std::string TrimmedText(const xmlNode* parent, std::string_view space, std::string_view name) {
    return std::string(internal::Trim(Text(Child(parent, space, name))));
}

std::optional<std::string> Attribute(const xmlNode* node, std::string_view space,
                                     std::string_view name) {
    for (const xmlAttr* attribute = node->properties; attribute; attribute = attribute->next) {
        const bool inSpace = space.empty()
                                 ? attribute->ns == nullptr
                                 : attribute->ns != nullptr && View(attribute->ns->href) == space;
        if (inSpace && View(attribute->name) == name)
            return std::string(internal::Trim(Text(reinterpret_cast<const xmlNode*>(attribute))));
    }
    return std::nullopt;
}

std::optional<uint64_t> Unsigned(std::string_view text) {
    if (text.empty() || text.size() > 19) return std::nullopt;
    uint64_t value = 0;
    for (const char ch : text) {
        if (ch < '0' || ch > '9') return std::nullopt;
        value = value * 10 + static_cast<uint64_t>(ch - '0');
    }
    return value;
}

std::optional<std::vector<int>> ExitCodes(std::string_view text) {
    std::vector<int> codes;
    std::size_t at = 0;
    while (at < text.size()) {
        const std::size_t end = text.find_first_of(" \t\r\n,", at);
        const std::string_view word = text.substr(at, end - at);
        if (!word.empty()) {
            const auto value = Unsigned(word);
            if (!value || *value > 255) return std::nullopt;
            codes.push_back(static_cast<int>(*value));
        }
        if (end == std::string_view::npos) break;
        at = end + 1;
    }
    if (codes.empty()) return std::nullopt;
    return codes;
}

bool IsSha256(std::string& text) {
    if (text.size() != 64) return false;
    for (char& ch : text) {
        ch = internal::Lower(ch);
        if (!((ch >= '0' && ch <= '9') || (ch >= 'a' && ch <= 'f'))) return false;
    }
    return true;
}

// The enclosure for this platform: one that says linux, else one that names no platform.
// WinSparkle feeds may carry one enclosure per platform in one item.
const xmlNode* Enclosure(const xmlNode* item, std::string* foreignOs) {
    const xmlNode* neutral = nullptr;
    for (const xmlNode* child = item->children; child != nullptr; child = child->next) {
        if (!Is(child, "", "enclosure")) continue;
        const std::string os = Attribute(child, kSparkleNamespace, "os").value_or("");
        if (internal::EqualsNoCase(os, "linux")) return child;
        if (os.empty() && neutral == nullptr) neutral = child;
        if (!os.empty() && foreignOs->empty()) *foreignOs = os;
    }
    return neutral;
}

FeedItem ReadItem(const xmlNode* node) {
    FeedItem item;
    item.title = TrimmedText(node, "", "title");
    const std::string pubDate = TrimmedText(node, "", "pubDate");
    std::string foreignOs;
    const xmlNode* enclosure = Enclosure(node, &foreignOs);
    auto fromItemOrEnclosure = [&](std::string_view name) {
        std::string text = TrimmedText(node, kSparkleNamespace, name);
        if (text.empty() && enclosure != nullptr)
            text = Attribute(enclosure, kSparkleNamespace, name).value_or("");
        return text;
    };
    item.versionText = fromItemOrEnclosure("version");
    item.version = ParseVersion(item.versionText);
    item.shortVersion = fromItemOrEnclosure("shortVersionString");
    item.channel = TrimmedText(node, kSparkleNamespace, "channel");
    const xmlNode* tags = Child(node, kSparkleNamespace, "tags");
    item.critical = Child(node, kSparkleNamespace, "criticalUpdate") != nullptr ||
                    (tags != nullptr && Child(tags, kSparkleNamespace, "criticalUpdate"));
    item.installerArguments = fromItemOrEnclosure("installerArguments");
    item.requiresAdmin = Child(node, kLumettaNamespace, "requiresAdmin") != nullptr;
    item.description = Text(Child(node, "", "description"));
    item.releaseNotesLink = TrimmedText(node, kSparkleNamespace, "releaseNotesLink");

    auto ignore = [&item](std::string reason) {
        if (item.ignored.empty()) item.ignored = std::move(reason);
    };
    const std::string interval = TrimmedText(node, kSparkleNamespace, "phasedRolloutInterval");
    if (const auto seconds = Unsigned(interval); seconds && *seconds <= INT32_MAX)
        item.phasedRolloutInterval = static_cast<int64_t>(*seconds);
    else if (!interval.empty())
        ignore("its sparkle:phasedRolloutInterval \"" + interval + "\" is not a number of seconds");
    const std::string codes = TrimmedText(node, kLumettaNamespace, "successExitCodes");
    if (const auto parsed = ExitCodes(codes))
        item.successExitCodes = *parsed;
    else if (Child(node, kLumettaNamespace, "successExitCodes") != nullptr)
        ignore("its lumetta:successExitCodes \"" + codes + "\" are not exit statuses (0-255)");

    if (enclosure == nullptr && !foreignOs.empty()) {
        item.os = foreignOs;
        ignore("it is for another platform (" + foreignOs + ")");
    } else if (enclosure == nullptr) {
        ignore("it has no enclosure");
    } else {
        item.os = Attribute(enclosure, kSparkleNamespace, "os").value_or("");
        item.url = Attribute(enclosure, "", "url").value_or("");
        item.sha256 = Attribute(enclosure, kLumettaNamespace, "sha256").value_or("");
        const std::string length = Attribute(enclosure, "", "length").value_or("");
        if (const auto value = Unsigned(length)) item.length = *value;
        if (item.url.empty())
            ignore("its enclosure has no url");
        else if (!Unsigned(length))
            ignore("its enclosure's length \"" + length + "\" is not a number of bytes");
        else if (item.sha256.empty())
            ignore("its enclosure has no lumetta:sha256: nothing binds its file");
        else if (!IsSha256(item.sha256))
            ignore("its enclosure's lumetta:sha256 is not 64 hex digits");
    }
    if (item.versionText.empty())
        ignore("it has no sparkle:version");
    else if (!item.version)
        ignore("its version \"" + item.versionText + "\" does not parse");
    if (const auto date = ParseFeedDate(pubDate))
        item.pubDate = *date;
    else
        ignore(pubDate.empty() ? "it has no pubDate"
                               : "its pubDate \"" + pubDate + "\" is not a date");
    return item;
}

}  // namespace

bool ParseAppcast(std::string_view bytes, Appcast* feed, std::string* reason) {
    *feed = Appcast();
    if (bytes.size() > kMaxFeedBytes) {
        *reason = "the feed is larger than 1 MiB (" + std::to_string(bytes.size()) + " bytes)";
        return false;
    }
    static std::once_flag once;
    std::call_once(once, [] { xmlInitParser(); });
    xmlParserCtxtPtr context = xmlNewParserCtxt();
    if (context == nullptr) {
        *reason = "out of memory";
        return false;
    }
    context->sax->serror = IgnoreError;
    Document document(xmlCtxtReadMemory(context, bytes.data(), static_cast<int>(bytes.size()),
                                        "feed.xml", nullptr, kParseOptions));
    const bool wellFormed = context->wellFormed != 0;
    xmlFreeParserCtxt(context);
    const xmlNode* root = document ? xmlDocGetRootElement(document.get()) : nullptr;
    if (!wellFormed || root == nullptr) {
        *reason = "the feed is not well-formed XML";
        return false;
    }
    if (document->intSubset != nullptr || document->extSubset != nullptr) {
        *reason = "the feed has a document type declaration, which feeds never need";
        return false;
    }
    const xmlNode* channel = Is(root, "", "rss") ? Child(root, "", "channel") : nullptr;
    if (channel == nullptr) {
        *reason = "the feed is not an RSS document with a channel";
        return false;
    }
    feed->title = TrimmedText(channel, "", "title");
    const std::string expires = TrimmedText(channel, kLumettaNamespace, "expires");
    if (!expires.empty()) {
        feed->expires = ParseFeedDate(expires);
        if (!feed->expires) {
            *reason = "the feed's lumetta:expires \"" + expires + "\" is not a date";
            feed->title.clear();
            return false;
        }
    }
    for (const xmlNode* child = channel->children; child != nullptr; child = child->next)
        if (Is(child, "", "item")) feed->items.push_back(ReadItem(child));
    return true;
}

}  // namespace Feed
