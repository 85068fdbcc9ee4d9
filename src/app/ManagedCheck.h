// Whether the product has an update, from its configured feed: the settings that
// ProductConfiguration gives (feed address, installed version, channel, public key) and the
// user's stored state, handed to Engine::CheckFeed. Used by `lumetta-updater --check` and by
// `lumetta-diag feed check`.
//
// Thread safety: any thread. Failure: ok false with the reason in words, never an exception
// (std::bad_alloc aside).
#pragma once

#include <ostream>
#include <string>

#include "app/ProductConfiguration.h"
#include "app/UpdateStateStore.h"
#include "engine/FeedCheck.h"

struct ManagedCheck {
    ConfiguredValue feedUrl, installedVersion, channel;
    StoredUpdateState stored;
    Engine::FeedCheckResult result;  // result.ok false: result.reason says why
};

// `now`: seconds since the epoch.
ManagedCheck CheckConfiguredFeed(ProductConfiguration& configuration, int64_t now);

// Exit statuses of `lumetta-updater --check`.
inline constexpr int kCheckUpToDate = 0;
inline constexpr int kCheckFailed = 1;
inline constexpr int kCheckUpdateAvailable = 10;

// `lumetta-updater --check`: one line on `out`, "update <version> <url>" or "up-to-date
// <installed>", or the reason on `err`; returns the exit status.
int RunUpdateCheck(ProductConfiguration& configuration, std::ostream& out, std::ostream& err);
