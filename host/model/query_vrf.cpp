#include <uvelhost/vrf.h>

#include "model/query.h"
#include <memory>
#include <new>
#include <vector>

using namespace uvel::host::model;

namespace {

constinit thread_local uint32_t t_vsys = 0;

/* Index of the VRF with the name that has the instance; UVELHOST_NONE without one. */
uint32_t FindByName(const Reading &model, const char *name, uint32_t MDL_VRF_S::*instance) {
    uint32_t found = UVELHOST_NONE;
    if (name == nullptr || strnlen(name, VRF_NAME_SIZE) == VRF_NAME_SIZE)
        return found;
    model->vrfs_by_name.VisitFrom(MakeNameKey<VRF_NAME_SIZE>(name, 0), [&](const VrfNameKey &key, uint32_t index) {
        if (std::strcmp(key.name, name) != 0)
            return false;
        if (model->vrfs.Get(index)->*instance != 0)
            found = index;
        return found == UVELHOST_NONE;
    });
    return found;
}

uint32_t WriteByName(const char *name, uint32_t MDL_VRF_S::*instance, uint32_t *out) {
    const Reading model;
    const uint32_t found = FindByName(model, name, instance);
    if (found == UVELHOST_NONE || out == nullptr)
        return 1;
    *out = found;
    return UVELHOST_OK;
}

/* A scan holds the indices that were there when it began. A place in it outlives removals and additions. */
struct Scan {
    std::vector<uint32_t> indices;
    std::size_t next = 0;
};

thread_local std::unique_ptr<Scan> t_scan;

bool BeginScan() noexcept {
    try {
        t_scan = std::make_unique<Scan>();
        const Reading model;
        t_scan->indices.reserve(model->vrfs.Size());
        model->vrfs.VisitFrom(0, [](uint32_t index, const auto &) {
            t_scan->indices.push_back(index);
            return true;
        });
        return true;
    } catch (const std::bad_alloc &) {
        t_scan.reset();
        return false;
    }
}

} // namespace

uint32_t CFG_GetVsysID(void) {
    return t_vsys;
}

void MDL_SetThreadVsys(uint32_t ulVsysId) {
    t_vsys = ulVsysId;
}

uint32_t BDS_l3vpnName2VrfIdQueryByName(const char *pszName, uint32_t *pulVrfIndex) {
    return WriteByName(pszName, &MDL_VRF_S::ulIpv4, pulVrfIndex);
}

uint32_t L3VPN6_VRFMGM_VrfIdQueryByName(const char *pszName, uint32_t *pulVrfIndex) {
    return WriteByName(pszName, &MDL_VRF_S::ulIpv6, pulVrfIndex);
}

uint32_t L3VPN6_VRFMGM_VrfNameQueryById(uint32_t ulVrfIndex, char szName[VRF_NAME_SIZE]) {
    const Reading model;
    const MDL_VRF_S *vrf = model->vrfs.Get(ulVrfIndex);
    return vrf == nullptr || vrf->ulIpv6 == 0 ? 1 : WriteText(vrf->szName, szName, VRF_NAME_SIZE);
}

uint32_t L3VPN_GetFirstVrfIdAndVrfName(uint32_t *pulVrfIndex, char szName[VRF_NAME_SIZE]) {
    return BeginScan() ? L3VPN_GetNextVrfIdAndVrfName(pulVrfIndex, szName) : 1;
}

uint32_t L3VPN_GetNextVrfIdAndVrfName(uint32_t *pulVrfIndex, char szName[VRF_NAME_SIZE]) {
    if (t_scan == nullptr || pulVrfIndex == nullptr || szName == nullptr)
        return 1;
    const Reading model;
    while (t_scan->next < t_scan->indices.size()) {
        const MDL_VRF_S *vrf = model->vrfs.Get(t_scan->indices[t_scan->next++]);
        if (vrf == nullptr)
            continue;
        *pulVrfIndex = vrf->ulVrfIndex;
        return WriteText(vrf->szName, szName, VRF_NAME_SIZE);
    }
    return 1;
}

void L3VPN_ScanVrfIdAndVrfNameFinish(void) {
    t_scan.reset();
}
