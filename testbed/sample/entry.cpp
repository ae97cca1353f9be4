// The module's only export.
#include "sample_importer.h"

SAMPLE_EXPORT std::int32_t xImportEntry(std::int32_t selector, host::imStdParms* parms, void* param1,
                                        void* param2) {
    return sample::importEntry(selector, parms, param1, param2);
}
