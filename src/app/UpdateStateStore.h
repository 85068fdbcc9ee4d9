// The per-user state of managed updates, kept in the registry under
// HKEY_CURRENT_USER\Software\<bundle>\<product>\Update:
//
//   RolloutGroup   REG_DWORD  0-6, drawn once (phased rollouts)
//   SkippedVersion REG_SZ     a.b.c.d of the version the user skipped
//   RemindAfter    REG_SZ     seconds since the epoch until which to stay quiet
//   NewestPubDate  REG_SZ     seconds since the epoch of the newest item seen in a feed
//
// Thread safety: any thread. A missing or unreadable value reads as its default.
#pragma once

#include <string>

#include "app/ProductConfiguration.h"
#include "feed/Offer.h"

struct StoredUpdateState {
    Feed::UpdateState state;
    bool groupDrawn = false;  // RolloutGroup was there and in range
    std::wstring keyPath;
};

StoredUpdateState ReadUpdateState(ProductConfiguration& configuration);
