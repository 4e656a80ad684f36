// The library's files as the commands use them.
#pragma once

#include "catalog/catalog_repository.h"
#include "catalog/settings.h"
#include "ctl/session.h"
#include "platform/single_instance.h"

namespace morvane {

/// Reading: the settings and the catalog of the session's store. Works beside an open window.
struct StoreReader {
    explicit StoreReader(const Session& session);

    std::string folder;
    Settings settings;
    CatalogRepository catalog;
};

/// Writing: as StoreReader, and the claim that keeps a window from working on the same store
/// meanwhile. Throws std::runtime_error when a window holds it.
struct StoreWriter : StoreReader {
    explicit StoreWriter(const Session& session);

    SingleInstance claim;
};

}  // namespace morvane
