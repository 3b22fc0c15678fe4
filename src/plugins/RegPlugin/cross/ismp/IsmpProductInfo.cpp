#include "cross/ismp/IsmpProductInfo.h"

namespace RegPlugin {

template class ProviderProductInfo<RegistryDataProviderFactory::ISMP_PROVIDER, true>;

IsmpProductInfo::IsmpProductInfo() = default;

IsmpProductInfo::~IsmpProductInfo() = default;

}  // namespace RegPlugin
