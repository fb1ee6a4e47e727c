// The line that a refused registration for the end of a recovery leaves.

#define KIVO_RegEventCallBackIf ProbedRegEventCallBackIf
#define KIVO_RegEventCallBack ProbedRegEventCallBack
#define NAC_Utils_PvtLog ProbedRegistrationLog
#include "../../src/common_adp/src/kivo_oxm/registration.cpp"

#include "probed_log.h"

namespace {

TEST(RegistrationLog, NamesTheResultOfARefusalAndNothingElse) {
    kit::Op<CFM_OverNotifyModuleRegister>().FailsOn(1, 4294967295);
    KIVO_RegEventCallBackIf();
    EXPECT_EQ(Lines{"1 [KIVO_RegEvent_CallBackIf]CFM_Over_Notify_Module_Register res:4294967295."}, TakeLines());
    KIVO_RegEventCallBackIf();
    EXPECT_EQ(Lines{}, TakeLines());
}

} // namespace
