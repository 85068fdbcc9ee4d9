// lumetta-diag feed item FILE --version V --url URL [--notes FILE]: the <item> of an update
// feed for a release whose setup is FILE, with the file's length and SHA-256, dated now, for
// the product maker to paste into the feed. Exit status 0, or 1 with the reason on stderr.
//
// lumetta-diag feed check [ARGS...]: fetches the feed the updater would use if started with
// ARGS, and lists every item with why it is or is not offered; the last line is
// "result update <version> <url>", "result up-to-date <installed>" (exit status 0) or
// "result failed: <reason>" (exit status 1). Nothing is downloaded, nothing is changed.
#include <CLI/CLI.hpp>

#include <cstdio>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "DiagCommands.h"
#include "app/ManagedCheck.h"
#include "engine/FileDigest.h"
#include "feed/FeedDate.h"
#include "feed/Version.h"
#include "foundation/TextConversion.h"
#include "system/FileHelpers.h"

namespace {

struct ItemOptions {
    std::string file;
    std::string version;
    std::string url;
    std::string notes;  // a file of HTML release notes; empty: none
};

std::string Escaped(const std::string& text) {
    std::string result;
    for (const char ch : text) {
        switch (ch) {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            case '"':
                result += "&quot;";
                break;
            default:
                result += ch;
        }
    }
    return result;
}

// HTML inside CDATA, where only "]]>" has to be split across two sections.
std::string InCdata(const std::string& html) {
    std::string result = "<![CDATA[";
    for (std::size_t at = 0; at < html.size(); ++at) {
        if (html.compare(at, 3, "]]>") == 0) {
            result += "]]]]><![CDATA[>";
            at += 2;
        } else {
            result += html[at];
        }
    }
    return result + "]]>";
}

int PrintItem(const ItemOptions& options) {
    if (!Feed::ParseVersion(options.version)) {
        std::fprintf(stderr, "error: the version \"%s\" is not up to four dotted numbers\n",
                     options.version.c_str());
        return 1;
    }
    Engine::FileDigest digest;
    std::string reason;
    if (!Engine::DigestFile(options.file, &digest, &reason)) {
        std::fprintf(stderr, "error: %s\n", reason.c_str());
        return 1;
    }
    std::vector<uint8_t> notes;
    if (!options.notes.empty() &&
        !System::ReadWholeFile(STLHelpers::Utf8ToWide(options.notes), notes)) {
        std::fprintf(stderr, "error: the notes file %s cannot be read\n", options.notes.c_str());
        return 1;
    }
    std::printf("<item>\n  <pubDate>%s</pubDate>\n  <sparkle:version>%s</sparkle:version>\n",
                Feed::FormatRssDate(std::time(nullptr)).c_str(), Escaped(options.version).c_str());
    if (!options.notes.empty())
        std::printf("  <description>%s</description>\n",
                    InCdata(std::string(notes.begin(), notes.end())).c_str());
    std::printf(
        "  <enclosure url=\"%s\" length=\"%llu\" type=\"application/octet-stream\"\n"
        "             sparkle:os=\"linux\" lumetta:sha256=\"%s\"/>\n</item>\n",
        Escaped(options.url).c_str(), static_cast<unsigned long long>(digest.length),
        digest.sha256.c_str());
    return 0;
}

std::string Utf8(const std::wstring& text) {
    return STLHelpers::WideToUtf8(text);
}

int Failed(const std::string& reason) {
    std::printf("result failed: %s\n", reason.c_str());
    return 1;
}

int CheckFeed(const std::vector<std::string>& args) {
    std::vector<std::wstring> arguments{System::GetModulePath()};
    for (const auto& arg : args) arguments.push_back(STLHelpers::Utf8ToWide(arg));
    ProductConfiguration configuration(std::move(arguments));
    const ManagedCheck check = CheckConfiguredFeed(configuration, std::time(nullptr));
    std::printf("feed: %s (%s)\n", Utf8(check.feedUrl.value).c_str(),
                Utf8(check.feedUrl.source).c_str());
    std::printf("installed: %s (%s)\n", Utf8(check.installedVersion.value).c_str(),
                Utf8(check.installedVersion.source).c_str());
    std::printf("channel: %s\n",
                check.channel.value.empty() ? "(none)" : Utf8(check.channel.value).c_str());
    if (check.stored.groupDrawn)
        std::printf("rollout group: %u\n", check.stored.state.rolloutGroup);
    else
        std::printf("rollout group: not drawn yet (0 assumed)\n");

    const Engine::FeedCheckResult& result = check.result;
    for (std::size_t i = 0; i < result.feed.items.size() && i < result.decision.reasons.size(); ++i)
        std::printf("item %s: %s\n", result.feed.items[i].versionText.c_str(),
                    result.decision.reasons[i].c_str());
    if (result.feed.expires)
        std::printf("expires: %s (lumetta:expires; renew it with every publication)\n",
                    Feed::FormatRssDate(*result.feed.expires).c_str());
    if (!result.ok) return Failed(result.reason);
    std::printf("trust: %s\n", result.trust.c_str());
    if (!result.decision.offer) {
        std::printf("result up-to-date %s\n",
                    Feed::ParseVersion(Utf8(check.installedVersion.value))->ToString().c_str());
        return 0;
    }
    const Feed::FeedItem& offer = result.feed.items[*result.decision.offer];
    std::printf("result update %s %s\n", offer.version->ToString().c_str(), offer.url.c_str());
    return 0;
}

const DiagCommands::Registration registration{
    "feed", [](CLI::App& app) {
        auto* feed = app.add_subcommand("feed", "Write and check update feeds");
        feed->require_subcommand(1);
        auto* item = feed->add_subcommand(
            "item", "Print the feed <item> of a release, with its setup's length and SHA-256");
        auto options = std::make_shared<ItemOptions>();
        item->add_option("FILE", options->file, "The release's setup program")->required();
        item->add_option("--version", options->version, "The release's version (a.b.c.d)")
            ->required();
        item->add_option("--url", options->url, "Where the setup will be downloaded from")
            ->required();
        item->add_option("--notes", options->notes, "A file of release notes in HTML");
        item->callback([options]() { DiagCommands::SetExitCode(PrintItem(*options)); });
        auto* check = feed->add_subcommand(
            "check", "Fetch the feed and say for every item why it is or is not offered");
        auto args = std::make_shared<std::vector<std::string>>();
        check->add_option("ARGS", *args, "Updater arguments, e.g. /feedURL https://...");
        check->callback([args]() { DiagCommands::SetExitCode(CheckFeed(*args)); });
    }};

}  // namespace
