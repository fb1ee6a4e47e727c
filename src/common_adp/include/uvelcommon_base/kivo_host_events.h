/* Notifications of the host: registration, and what becomes of those about interfaces, boards and addresses.
 *
 * KIVO_RegEventCallBack registers the library's adapters with the host, once per process. From then on the host calls
 * them; each filters, builds a record and raises an event, at once or through the event task (kivo_event_records.h).
 * The adapters for VLANs and trunks stand in kivo_vlan_events.h, those for virtual systems in kivo_vsys.h. They are
 * exported so that a product without a notifying host can raise events by calling them with the host's arguments.
 *
 * Usage:
 *     KIVO_RegEventCallBack();                      // at start-up, when the modules have registered for the events
 *
 * Ownership: nothing is kept; what the arguments lead to is read during the call.
 * Threads: register from one thread at start-up; the adapters keep no state and run on any thread.
 * Errors: an adapter returns 0 for a notification that it does not translate, 1 for a bad argument, otherwise what
 * raising the event returned. */
#ifndef UVELCOMMON_BASE_KIVO_HOST_EVENTS_H
#define UVELCOMMON_BASE_KIVO_HOST_EVENTS_H

#include <uvelcommon_base/kivo_types.h>

/* ---- registration ---- */

/* Registers all adapters with the host, once per process: later calls return at once. There is no deregistration. */
UVEL_API void KIVO_RegEventCallBack(void);

/* The body of KIVO_RegEventCallBack, without the guard: every call registers everything again. A registration that fails
 * is asserted, where the host says so, and the others follow all the same. */
UVEL_API void KIVO_RegEventCallBackIf(void);

/* ---- configuration ---- */

/* The configuration has been recovered: queues event 0 without data. */
UVEL_API uint32_t KIVO_Adapt_CfmRecoveOverCB(void);

/* ---- interfaces ---- */

/* An interface changed: events 2, 3, 6 and 25 are queued as event 1, sub-events 0, 19, 1 and 21. */
UVEL_API uint32_t KIVO_Adapt_IFEvtCB(uint32_t ulEvent, uint32_t ulIfIndex);

/* A command was carried out on an interface: queued as event 1 with the sub-event that KIVO_Get_KivoIFCmdtype gives.
 * ulExtra does not reach the callbacks. */
UVEL_API uint32_t KIVO_Adapt_IFNotifyEvtCB(uint32_t ulIfIndex, uint32_t ulCommand, uint32_t ulParam, uint32_t ulExtra);

/* An interface goes (event 6): a loopback interface, port type 11, is queued as event 1, sub-event 1. */
UVEL_API uint32_t KIVO_Adapt_IfLoopDeleteEvtCB(uint32_t ulEvent, uint32_t ulIfIndex);

/* A state of an interface: commands 2, 3, 7 and 8 are queued as event 5, sub-events 27, 26, 23 and 24. States 0 and 1
 * become 28 and 29. pulFlags may be null. */
UVEL_API uint32_t KIVO_Adapt_IOCTLCB(uint32_t ulCommand, uint32_t ulState, uint32_t ulIfIndex,
                                     const uint32_t *pulFlags);

/* A state of a layer-2 sub-interface: command 12 with state 0 or 1 is queued as event 5, sub-event 32, with state 33 or
 * 34. pulFlags may be null. */
UVEL_API uint32_t KIVO_Adapt_IOCTLCB_L2SUBIF(uint32_t ulCommand, uint32_t ulState, uint32_t ulIfIndex,
                                             const uint32_t *pulFlags);

/* A question about the configuration of the interface ulA: kind 42 raises event 1300 at once, with ulB as parameter and
 * ulC in place of the user. */
UVEL_API uint32_t KIVO_Adapt_IFCfgCheckExtend(uint32_t ulKind, uint32_t ulA, uint32_t ulB, uint32_t ulC);

/* ---- boards ---- */

/* A slot: kinds 0, 1, 2 and 3 are queued as event 3, sub-events 0, 2, 1 and 3. */
UVEL_API uint32_t KIVO_Adapt_SlotEvtCB(uint32_t ulKind, uint32_t ulA, uint32_t ulB);

/* A card: kinds 0 to 4 are queued as event 4, sub-events 4, 5, 8, 7 and 6. */
UVEL_API uint32_t KIVO_Adapt_CardEvtCB(uint32_t ulKind, uint32_t ulA, uint32_t ulB, uint32_t ulC);

/* ---- addresses, VRFs, bridge domains, ports ---- */

/* An IPv4 address of an interface, *pulAddrNet in network order: events 16 and 32 raise event 6 at once, sub-events 0
 * and 1. A null pointer asserts and gives 1. */
UVEL_API uint32_t KIVO_Adapt_IPEvtCB(const uint32_t *pulIfIndex, uint32_t ulEvent, const uint32_t *pulAddrNet);

/* The VRF of something: event 10 is queued as event 41, sub-event 31. */
UVEL_API uint32_t KIVO_Adapt_VrfSetCB(uint32_t ulEvent, uint32_t ulValue);

/* A bridge domain: sub-types 0 and 1 raise event 45 at once. */
UVEL_API uint32_t KIVO_Adapt_BdEvtCB(uint32_t ulSubType, uint32_t ulA, uint16_t usB);

/* A value (u16) of a port (u32 port index): events 241 and 593 are queued as events 48 and 47. 1 for a null pointer. */
UVEL_API uint32_t KIVO_Adapt_PortChgEvtCB(const void *pPortIndex, uint32_t ulEvent, void *pValue);

/* A question whether a port may change: raises event 1201 at once, with pData as it came. */
UVEL_API uint32_t KIVO_Adapt_PortHasCfgEvtCB(const void *pKey, uint32_t ulEvent, void *pData);

#endif
