/* Lines for people, to where uvelhost/report.h says. */
#ifndef UVEL_HOST_CRYPTO_REPORT_H
#define UVEL_HOST_CRYPTO_REPORT_H

namespace uvel::host {

enum class Trouble : unsigned {
    NONE,
    KEY_MISSING,
    KEY_UNREADABLE,
    KEY_NO_FILE,
    KEY_OWNER,
    KEY_MODE,
    KEY_SIZE,
    KEY_NOT_MADE,
    CIPHER_UNKNOWN,
};

/* Reports one line unless the same trouble was the latest one: a service that checks a thousand
 * passwords tells it once. errno is kept. */
void ReportTrouble(Trouble trouble, const char *format, ...) __attribute__((format(printf, 2, 3)));

/* From now on any trouble is worth a line again. */
void TroubleIsOver();

/* Reports one line each time. */
void ReportText(const char *format, ...) __attribute__((format(printf, 1, 2)));

} // namespace uvel::host

#endif
