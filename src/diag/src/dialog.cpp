#include <uvelcommon_base/nac_log.h>

#include <cstdarg>
#include <securec.h>

static NAC_DIALOG_FUNC g_nacUtilDialog;

void NAC_Utils_RegDiaLogHook(NAC_DIALOG_FUNC pfDialog) {
    __atomic_store_n(&g_nacUtilDialog, pfDialog, __ATOMIC_RELAXED);
}

/* The hook is read once: what was tested against null is what is called, even if it is replaced meanwhile. */
void NAC_Utils_Dialog(uint32_t ulCode, const char *pszFormat, ...) {
    const NAC_DIALOG_FUNC pfDialog = __atomic_load_n(&g_nacUtilDialog, __ATOMIC_RELAXED);
    if (pfDialog == nullptr || pszFormat == nullptr)
        return;
    char szText[512] = {};
    va_list args;
    va_start(args, pszFormat);
    const int iLength = vsprintf_s(szText, sizeof(szText), pszFormat, args);
    va_end(args);
    if (iLength >= 0)
        pfDialog(ulCode, szText);
}
