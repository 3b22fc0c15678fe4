#include "cross/ismp/IsmpProductList.h"

namespace RegPlugin {

template class ProviderProductList<RegistryDataProviderFactory::ISMP_PROVIDER>;

IsmpProductList::IsmpProductList() = default;

IsmpProductList::~IsmpProductList() = default;

}  // namespace RegPlugin
