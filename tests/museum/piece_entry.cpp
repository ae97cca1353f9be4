#include "piece.h"

SAMPLE_EXPORT std::int32_t xImportEntry(std::int32_t selector, host::imStdParms* parms, void* param1,
                                        void* param2) {
    return piece::answer({selector, parms, param1, param2});
}
