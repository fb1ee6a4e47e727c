/* Makes the bounds-checked functions fail on demand, in executables that are linked with the library's open variant.
 *
 *     kit::Op<memcpy_s>().FailsOn(1, 34);                  // typed functions: as any host operation
 *     kit::PrintFault fault(kit::Variadic::SPRINTF_S);     // variadic ones: every call gives -1 while this lives
 *     kit::SecondPrintFault fault;                         // the first call of snprintf_truncated_s works
 */
#ifndef UVEL_TESTS_KIT_SECUREC_FAULTS_H
#define UVEL_TESTS_KIT_SECUREC_FAULTS_H

#include "kit.h"

#include <securec.h>

namespace kit {

enum class Variadic { SPRINTF_S, SNPRINTF_S, SNPRINTF_TRUNCATED_S, VSPRINTF_S, SSCANF_S };

class PrintFault {
  public:
    explicit PrintFault(Variadic function);
    ~PrintFault();
    PrintFault(const PrintFault &) = delete;
    PrintFault &operator=(const PrintFault &) = delete;

  private:
    void **slot_;
    void *before_;
};

class SecondPrintFault {
  public:
    SecondPrintFault();
    ~SecondPrintFault();
    SecondPrintFault(const SecondPrintFault &) = delete;
    SecondPrintFault &operator=(const SecondPrintFault &) = delete;
};

} // namespace kit

#endif
