// A complete resource manager for a resources directory: its metadata as language and
// skin provider, then a file storage and an XML storage for the directory and, for a
// module resource base of 0 or more, the executable's own resources.
//
// Never null; a directory without readable metadata gives a manager without languages.
// Thread safety: any thread; the manager is then used by one.
#pragma once

#include <cstdint>

#include <boost/shared_ptr.hpp>

#include "resourcelib/ManagerImpl.h"

namespace ResourceLib {

boost::shared_ptr<ManagerImpl> CreateResourceManager(ResourceName directory,
                                                     int32_t moduleResourceBase);

}  // namespace ResourceLib
