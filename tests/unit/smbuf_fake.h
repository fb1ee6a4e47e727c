/* Socket buffers for tests: hooks that make them of plain memory, count them, and fail or lose data on demand. */
#ifndef UVEL_TESTS_UNIT_SMBUF_FAKE_H
#define UVEL_TESTS_UNIT_SMBUF_FAKE_H

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <uvelcommon_base/kivo_hooks.h>

struct FakeSmbuf {
    uint8_t *data;
    uint32_t size;
};

/* While it lives, the channel's socket buffers are FakeSmbufs. */
class SmbufFake {
  public:
    SmbufFake() {
        live = created = 0;
        failCreation = withoutData = false;
        Install(KIVO_HOOK_YSB_SMBUF_CREATE, Create);
        Install(KIVO_HOOK_YSB_SMBUF_DESTROY, Destroy);
        Install(KIVO_HOOK_YSB_SMBUF_M2D, M2D);
    }
    ~SmbufFake() {
        Install<void()>(KIVO_HOOK_YSB_SMBUF_CREATE, nullptr);
        Install<void()>(KIVO_HOOK_YSB_SMBUF_DESTROY, nullptr);
        Install<void()>(KIVO_HOOK_YSB_SMBUF_M2D, nullptr);
    }

    inline static int live;
    inline static int created;
    inline static uint32_t lastMid;
    inline static bool failCreation;
    inline static bool withoutData;

    template <typename Function>
    static void Install(uint32_t id, Function *function) {
        const KIVO_HOOK hook = reinterpret_cast<KIVO_HOOK>(function);
        KIVOShell_SetHookFunc(id, &hook);
    }

  private:
    static void *Create(uint32_t mid, uint32_t size) {
        if (failCreation)
            return nullptr;
        lastMid = mid;
        ++live;
        ++created;
        auto *data = static_cast<uint8_t *>(withoutData ? nullptr : std::malloc(size == 0 ? 1 : size));
        if (data != nullptr)
            std::memset(data, 0xEE, size);
        return new FakeSmbuf{data, size};
    }
    static void Destroy(void *smbuf) {
        --live;
        std::free(static_cast<FakeSmbuf *>(smbuf)->data);
        delete static_cast<FakeSmbuf *>(smbuf);
    }
    static void *M2D(void *smbuf) { return static_cast<FakeSmbuf *>(smbuf)->data; }
};

#endif
