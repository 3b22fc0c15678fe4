#include "common/RegistryDataProvider.h"

namespace RegPlugin {

RegistryDataProvider::~RegistryDataProvider() = default;

}  // namespace RegPlugin
