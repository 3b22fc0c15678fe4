#include "cross/corvu/CorvuList.h"

namespace RegPlugin {

template class ProviderProductList<RegistryDataProviderFactory::CORVU_PROVIDER>;

CorvuList::CorvuList() = default;

CorvuList::~CorvuList() = default;

}  // namespace RegPlugin
