#include "host/tools/module_instance.h"

namespace {

HMODULE g_module_instance = nullptr;

} // namespace

HMODULE ModuleInstance() { return g_module_instance; }

void SetModuleInstance(HMODULE module) { g_module_instance = module; }
