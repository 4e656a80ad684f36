#include "ctl/store_access.h"

#include <stdexcept>

namespace morvane {

StoreReader::StoreReader(const Session& session)
    : folder(session.storeFolder()), settings(loadSettings(folder)), catalog(folder) {}

StoreWriter::StoreWriter(const Session& session)
    : StoreReader(session), claim(folder, SingleInstance::Role::Command) {
    if (!claim.isFirst())
        throw std::runtime_error(
            "素材库正在使用中：请先退出 MORVANE 素材助手的窗口，或等另一个 morvanectl 完成。");
}

}  // namespace morvane
