/* Notifications of the host about VLANs, layer-2 ports and trunks.
 *
 * The adapters that KIVO_RegEventCallBack registers with the host for layer 2 and trunks, and two that a product calls
 * itself. Each filters by the number of the host's event, builds a record and raises an event, at once or through the
 * event task (kivo_event_records.h). Host events with bit 30 of the number set are raised at once, those without it are
 * queued where an adapter knows both.
 *
 * Usage:
 *     uint16_t ausVlans[] = {10, 20};
 *     uint32_t ulCount = 2;
 *     (void)KIVO_Adapt_RcvVlanCreateEvt(ausVlans, 0x40000011, &ulCount);
 *
 * Ownership: nothing is kept; what the arguments lead to is read during the call.
 * Threads: any; the adapters keep no state.
 * Errors: an adapter returns 0 for an event that it does not translate, 1 for a null pointer, otherwise what raising the
 * event returned. Null pointers are asserted except where something else is said. */
#ifndef UVELCOMMON_BASE_KIVO_VLAN_EVENTS_H
#define UVELCOMMON_BASE_KIVO_VLAN_EVENTS_H

#include <uvelcommon_base/kivo_event_records.h>
#include <uvelhost/events.h>

/* ---- VLANs ---- */

/* VLANs in batches: pBitmap are the 128 words of a VLAN bitmap, pKey is not looked at. Events 577, 578, 579, 580, 582
 * and 0x40000243 become events 9, 10, 11, 12, 42 and 13. */
UVEL_API uint32_t KIVO_Adapt_VlanBatchEvtCB(const void *pKey, uint32_t ulEvent, void *pBitmap);

/* A sub-VLAN (u16) of a super-VLAN (u16): events 49 and 65 become events 16 and 17. */
UVEL_API uint32_t KIVO_Adapt_SubVlanEvtCB(const void *pSuperVlan, uint32_t ulEvent, void *pSubVlan);

/* An attribute (u32) of a VLAN (u16): event 0x40000051 becomes event 8. */
UVEL_API uint32_t KIVO_Adapt_VlanSetAttrEvtCB(const void *pVlan, uint32_t ulEvent, void *pAttr);

/* The interface of a VLAN (u16): events 129 and 130 become event 27, sub-events 17 and 16. */
UVEL_API uint32_t KIVO_Adapt_L2ifVlanUpDownEvtCB(const void *pVlan, uint32_t ulEvent, void *pUnused);

/* The configuration of a VLAN (u16) is being shown: events 368 and 387 become events 35 and 34. Without a VLAN or a
 * context 1, which is not asserted. */
UVEL_API uint32_t UVEL_Vlan_BuildRun(const void *pVlan, uint32_t ulEvent, void *pContext);

/* VLANs were created: pVlans are *pCount (u32) VLAN ids (u16); ids above 4095 are left out. Event 0x40000011 becomes
 * event 1301, also for no VLANs. */
UVEL_API uint32_t KIVO_Adapt_RcvVlanCreateEvt(const void *pVlans, uint32_t ulEvent, void *pCount);

/* ---- ports of VLANs ---- */

/* Ports (L2IF_PORT_LIST_S) of a VLAN or, with event 179, of a range of VLANs (u16[2], otherwise only the first is read):
 * events 161, 177 and 179 become events 14, 15 and 46. 1 for a null pointer, which is not asserted, for no ports and
 * when memory is short, otherwise 0. */
UVEL_API uint32_t KIVO_Adapt_VlanAddDelPortEvtCB(const void *pVlans, uint32_t ulEvent, void *pPorts);

/* Queues the event ulEvent, sub-event the same, with a head and a list of ports; the head's count is not looked at.
 * Results as for KIVO_Adapt_VlanAddDelPortEvtCB: what became of the event behind the queue is not known. */
UVEL_API uint32_t KIVO_Adapt_VlanAddDelPortEvtCBEnque(uint32_t ulEvent, const KIVO_EVT_VLAN_PORTS_S *pstHead,
                                                      const L2IF_PORT_LIST_S *pstPorts);

/* Hybrid trunk ports were added to VLANs: raises event 1302 for every port and, within it, every VLAN, giving way to
 * other tasks in between. The first callback that fails ends it with 1, otherwise 0. */
UVEL_API uint32_t KIVO_Adapt_RcvHybridTrunkVlanAddPortEvtProc(const L2IF_VLAN_LIST_S *pstVlans,
                                                              const L2IF_PORT_LIST_S *pstPorts);

/* QinQ (L2IF_QINQ_DATA_S) of a port (u32 port index): events 337, 0x40000151, 353 and 0x40000161 become events 18 to 21.
 * A port without an interface is ignored. */
UVEL_API uint32_t KIVO_Adapt_QinQEvtCB(const void *pPortIndex, uint32_t ulEvent, void *pQinQ);

/* An interface (u32 index) changes between the layers: events 193, 209, 210, 0x400000C1 and 0x400000D1 become events 32,
 * 28, 30, 31 and 29. Interfaces of physical type 47 are ignored; 1 when the type cannot be read. */
UVEL_API uint32_t KIVO_Adapt_PortSwitchEvtCB(const void *pIfIndex, uint32_t ulEvent, void *pUnused);

/* ---- trunks ---- */

/* A member ulMember of the trunk with the identifier ulTrunkId: events 2, 3, 7 and 8 become events 25, 23, 24 and 22. */
UVEL_API uint32_t KIVO_Adapt_TrkMemChgEvtCB(uint32_t ulTrunkId, uint32_t ulEvent, uint32_t ulMember);

/* A question whether an interface may become a member: raises event 1200 at once, with pData as it came. */
UVEL_API uint32_t KIVO_Adapt_TrkMemHasCfgEvtCB(uint32_t ulTrunkId, uint32_t ulEvent, void *pData);

/* A trunk goes: queues event 26 with the second and third argument, whatever they are. */
UVEL_API uint32_t KIVO_Adapt_TrunkDelEvtCB(uint32_t ulTrunkId, uint32_t ulEvent, uint32_t ulValue);

#endif
