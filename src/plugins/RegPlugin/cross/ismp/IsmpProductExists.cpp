#include "cross/ismp/IsmpProductExists.h"

namespace RegPlugin {

template class ProviderProductExists<RegistryDataProviderFactory::ISMP_PROVIDER>;

IsmpProductExists::IsmpProductExists() = default;

IsmpProductExists::~IsmpProductExists() = default;

}  // namespace RegPlugin
