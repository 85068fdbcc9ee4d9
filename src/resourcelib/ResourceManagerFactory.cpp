#include "resourcelib/ResourceManagerFactory.h"

#include <boost/make_shared.hpp>

#include "resourcelib/XmlMetadataProvider.h"
#include "storages/FileStorage.h"
#include "storages/WinResStorage.h"
#include "storages/XmlStorage.h"

namespace ResourceLib {

boost::shared_ptr<ManagerImpl> CreateResourceManager(ResourceName directory,
                                                     int32_t moduleResourceBase) {
    auto manager = boost::make_shared<ManagerImpl>();
    boost::shared_ptr<IMetadataProvider> metadata = CreateXmlMetadataProvider(directory, manager);
    manager->SetLanguageProvider(metadata);
    manager->SetSkinProvider(metadata);
    const std::wstring folder = directory.str();
    manager->AddStorage(boost::make_shared<FileStorage>(folder));
    manager->AddStorage(boost::make_shared<XmlStorage>(folder));
    if (moduleResourceBase >= 0)
        manager->AddStorage(boost::make_shared<WinResStorage>(moduleResourceBase));
    return manager;
}

}  // namespace ResourceLib
