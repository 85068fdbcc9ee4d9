#include "app/ManagedCheck.h"

#include <ctime>

#include "foundation/TextConversion.h"

ManagedCheck CheckConfiguredFeed(ProductConfiguration& configuration, int64_t now) {
    ManagedCheck check;
    check.feedUrl = configuration.GetFeedURL();
    check.installedVersion = configuration.GetInstalledVersion();
    check.channel = configuration.GetUpdateChannel();
    check.stored = ReadUpdateState(configuration);
    const std::string installed = STLHelpers::WideToUtf8(check.installedVersion.value);
    const auto version = Feed::ParseVersion(installed);
    if (check.feedUrl.value.empty()) {
        check.result.reason = "no update feed is configured";
    } else if (!version) {
        check.result.reason = "the installed version \"" + installed + "\" is not known";
    } else {
        Engine::FeedCheckSettings settings;
        settings.feedUrl = STLHelpers::WideToUtf8(check.feedUrl.value);
        settings.publicKey = STLHelpers::WideToUtf8(configuration.GetPublicKey());
        settings.context.installed = *version;
        settings.context.channel = STLHelpers::WideToUtf8(check.channel.value);
        settings.context.state = check.stored.state;
        settings.context.now = now;
        check.result = Engine::CheckFeed(settings);
    }
    return check;
}

int RunUpdateCheck(ProductConfiguration& configuration, std::ostream& out, std::ostream& err) {
    const ManagedCheck check = CheckConfiguredFeed(configuration, std::time(nullptr));
    const Engine::FeedCheckResult& result = check.result;
    if (!result.ok) {
        err << "lumetta-updater: " << result.reason << '\n';
        return kCheckFailed;
    }
    if (!result.decision.offer) {
        out << "up-to-date " << STLHelpers::WideToUtf8(check.installedVersion.value) << '\n';
        return kCheckUpToDate;
    }
    const Feed::FeedItem& offer = result.feed.items[*result.decision.offer];
    out << "update " << offer.version->ToString() << ' ' << offer.url << '\n';
    return kCheckUpdateAvailable;
}
