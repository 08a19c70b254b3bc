#include "frame/diagnostics/cancel.h"

#include "host/flag.h"

bool IsCanceled(KOV::IKOV_Flag* cancel_flag) {
    if (cancel_flag == nullptr) {
        return false;
    }
    VARIANT_BOOL value = VARIANT_FALSE;
    (void)cancel_flag->get_Value(&value);
    return value != VARIANT_FALSE;
}
