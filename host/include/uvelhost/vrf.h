/* VRFs and the virtual systems they back.
 *
 * A VRF has an index, 0 for the public one, and a name of at most 31 characters. A virtual system is a part of the
 * device with a 16-bit id and a VRF of the same number behind it. */
#ifndef UVELHOST_VRF_H
#define UVELHOST_VRF_H

#include "types.h"

#define VRF_NAME_SIZE 32U /* bytes that hold every VRF name, terminator included */

/* Changes of virtual systems. */
#define VRF_EVT_CREATED 1U
#define VRF_EVT_DELETED 2U

/* A virtual system appeared (VRF_EVT_CREATED) or went (VRF_EVT_DELETED). pusVsysId is valid during the call only. The
 * result is counted when it is not 0 and has no other effect. */
typedef uint32_t (*VRF_EVT_CB)(uint32_t ulKind, uint16_t *pusVsysId);

/* Registers pfCallback for one kind of change; from then on it is called on the host's notifying thread, one change at
 * a time, in the order of the changes. One function may be registered for both kinds. What exists already is not told.
 * Fails for a null callback, an unknown kind, and when there is no room for more. There is no deregistration. */
UVELHOST_API uint32_t VPNBASE_VRFMGM_RegisterCb(uint32_t ulMid, uint32_t ulKind, VRF_EVT_CB pfCallback);

/* Virtual system that the calling task works for, 0 when it works for the device as a whole. */
UVELHOST_API uint32_t CFG_GetVsysID(void);

/* ---- names and indices: fail for what does not exist and for null arguments ---- */

/* Writes the index of the VRF with an IPv4 instance of this name. */
UVELHOST_API uint32_t BDS_l3vpnName2VrfIdQueryByName(const char *pszName, uint32_t *pulVrfIndex);

/* Writes the index of the VRF with an IPv6 instance of this name. */
UVELHOST_API uint32_t L3VPN6_VRFMGM_VrfIdQueryByName(const char *pszName, uint32_t *pulVrfIndex);

/* Writes the name of a VRF with an IPv6 instance. */
UVELHOST_API uint32_t L3VPN6_VRFMGM_VrfNameQueryById(uint32_t ulVrfIndex, char szName[VRF_NAME_SIZE]);

/* ---- scan ----
 * First, then Next until it fails, then Finish, all on one thread; each thread has a scan of its own. It visits in
 * ascending order of the index what existed at First; what was removed since is left out. The callers may wait for as
 * long as they like between two steps. */

/* Begins a scan (an unfinished one of this thread is dropped) and writes index and name of the first VRF; the public
 * one takes part. Fails when there is none. Only the name and its terminator are written. */
UVELHOST_API uint32_t L3VPN_GetFirstVrfIdAndVrfName(uint32_t *pulVrfIndex, char szName[VRF_NAME_SIZE]);

/* Writes index and name of the next VRF. Fails at the end and without a scan, both outputs are then untouched. */
UVELHOST_API uint32_t L3VPN_GetNextVrfIdAndVrfName(uint32_t *pulVrfIndex, char szName[VRF_NAME_SIZE]);

/* Ends the scan and releases what it held. Called after every scan, also when First failed. */
UVELHOST_API void L3VPN_ScanVrfIdAndVrfNameFinish(void);

#endif
