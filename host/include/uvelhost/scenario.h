/* Scenarios: a device described in a YAML file, and what happens to it at which time.
 *
 *     char szError[256];
 *     SCN_SCENARIO *pstScenario = SCN_Load("edge.yaml", szError, sizeof szError);
 *     if (pstScenario == NULL) ...                    // szError: "edge.yaml:7:12: expected ..., found ..."
 *     ulRet = SCN_Run(pstScenario, 100, szError, sizeof szError);
 *     SCN_Free(pstScenario);
 *
 * The file has two parts, both may be missing; docs/scenarios.md lists their keys:
 *
 *     device:                                        # what the device is at the start; what an earlier scenario
 *       name: edge-1                                 # put and this one does not name is removed
 *       boards: [{slot: 1, role: main}]
 *       interfaces:
 *         - {index: 7, name: GigabitEthernet1/0/1, state: up, addresses: [192.0.2.1/24]}
 *     steps:
 *       - at: 500ms                                  # since the start; "after" counts from the step before
 *         put: {interfaces: [{index: 7, state: down}]}     # adds what is new, changes what is named
 *         remove: {vlans: [20]}
 *         raise: [{slot: {kind: 0, a: 1, b: 0}}]     # any notification
 *
 * A wrong file is refused whole: loading tries every step on the model, and gives that up again.
 * Each step is one batch of the feeder MDL_FEEDER_SCENARIO. Threads: one runs a scenario, any may stop it. */
#ifndef UVELHOST_SCENARIO_H
#define UVELHOST_SCENARIO_H

#include "types.h"

/* A loaded scenario. */
typedef struct SCN_SCENARIO SCN_SCENARIO;

#define SCN_STOPPED 2U /* result of a run that was stopped */

/* Reads a file. Null, and the complaint cut to fit into ulSize bytes (pszError may be null), when it is wrong. */
UVELHOST_API SCN_SCENARIO *SCN_Load(const char *pszPath, char *pszError, uint32_t ulSize);

/* The same from a text; pszName stands for the file in complaints. */
UVELHOST_API SCN_SCENARIO *SCN_LoadText(const char *pszText, const char *pszName, char *pszError, uint32_t ulSize);

/* Null: nothing happens. Not while it runs. What it put into the model stays. */
UVELHOST_API void SCN_Free(SCN_SCENARIO *pstScenario);

/* Number of timed steps. */
UVELHOST_API uint32_t SCN_GetStepCount(const SCN_SCENARIO *pstScenario);

/* Writes when a step (counted from 0) is due, in milliseconds since the start; fails behind the last. */
UVELHOST_API uint32_t SCN_GetStepTime(const SCN_SCENARIO *pstScenario, uint32_t ulStep, uint64_t *pulTimeMs);

/* Makes the device what the scenario says it is at the start. 1, with the complaint, when the model refuses it: another
 * feeder has changed it since the scenario was loaded. Nothing is changed then. */
UVELHOST_API uint32_t SCN_ApplyDevice(SCN_SCENARIO *pstScenario, char *pszError, uint32_t ulSize);

/* Carries one step out, without waiting for its time; results as above. */
UVELHOST_API uint32_t SCN_ApplyStep(SCN_SCENARIO *pstScenario, uint32_t ulStep, char *pszError, uint32_t ulSize);

/* Applies the device and carries all steps out, each at its time. ulSpeedPercent 100 is as written, 1000 ten times as
 * fast, 0 without waiting. 0 at the end, 1 with the complaint at a step that is refused, SCN_STOPPED. */
UVELHOST_API uint32_t SCN_Run(SCN_SCENARIO *pstScenario, uint32_t ulSpeedPercent, char *pszError, uint32_t ulSize);

/* Ends a run before its next step, also one that begins later. */
UVELHOST_API void SCN_Stop(SCN_SCENARIO *pstScenario);

#endif
