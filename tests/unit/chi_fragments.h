/* Headers of the channel field by field, and a receiver for fragments that no honest peer sends. */
#ifndef UVEL_TESTS_UNIT_CHI_FRAGMENTS_H
#define UVEL_TESTS_UNIT_CHI_FRAGMENTS_H

#include "kit.h"
#include "smbuf_fake.h"

#include <array>
#include <cstring>
#include <set>
#include <uvelcommon_base/kivo_chi_reassembly.h>

namespace fragments {

constexpr uint32_t YSB = 2;
constexpr uint32_t HEADER = 48;

/* One field of a header: where it stands, how wide it is, what it truly is. */
struct Field {
    uint32_t offset;
    uint32_t width;
    uint64_t truth;

    uint64_t Largest() const { return width == 4 ? 0xFFFFFFFF : (1ULL << (8 * width)) - 1; }
    std::vector<uint64_t> Values() const {
        const std::set<uint64_t> values = {0, 1, Largest(), Largest() - 1, truth, truth + 1, (truth - 1) & Largest()};
        return {values.begin(), values.end()};
    }
    void Put(uint8_t *header, uint64_t value) const { std::memcpy(header + offset, &value, width); }
};

constexpr uint32_t ID = 0x11223344;
constexpr uint32_t NUMBER = 5;

/* All fields of a YSB header of 20 payload bytes, of which `payload` are in this fragment. */
inline std::vector<Field> FieldsOf(uint32_t total) {
    return {{0, 4, ID},  {4, 4, 0},  {8, 4, 0},      {12, 4, 7},   {16, 4, 8},  {20, 4, 9},     {24, 4, 10},
            {28, 2, 77}, {30, 2, 3}, {32, 4, total}, {36, 4, 0xA}, {40, 4, ID}, {44, 4, NUMBER}};
}

template <std::size_t SIZE = HEADER>
std::array<uint8_t, SIZE> HeaderOf(const std::vector<Field> &fields) {
    std::array<uint8_t, SIZE> header{};
    for (const Field &field : fields)
        field.Put(header.data(), field.truth);
    return header;
}

/* Calls with every header that differs from the true one in one field or in two. */
template <std::size_t SIZE = HEADER, typename Visit>
int ForAllHeaders(const std::vector<Field> &fields, Visit visit) {
    int cases = 0;
    const std::array<uint8_t, SIZE> truth = HeaderOf<SIZE>(fields);
    for (std::size_t first = 0; first < fields.size(); ++first) {
        for (const uint64_t a : fields[first].Values()) {
            for (std::size_t second = first; second < fields.size(); ++second) {
                for (const uint64_t b : fields[second].Values()) {
                    std::array<uint8_t, SIZE> header = truth;
                    fields[first].Put(header.data(), a);
                    fields[second].Put(header.data(), b);
                    visit(header);
                    ++cases;
                }
            }
        }
    }
    return cases;
}

inline uint32_t WordAt(const uint8_t *bytes, uint32_t offset) {
    uint32_t value;
    std::memcpy(&value, bytes + offset, sizeof value);
    return value;
}

class Fragments : public testing::Test {
  protected:
    ~Fragments() override {
        Drop();
        EXPECT_EQ(0, SmbufFake::live) << "socket buffers lost";
    }
    void Drop() {
        if (context.pBuffer != nullptr)
            CBUF_Free(YSB, context.pBuffer);
        context = {};
        if (complete != nullptr)
            CBUF_Free(YSB, complete);
        complete = nullptr;
    }
    /* A buffer of exactly header and payload, so that whoever reads or writes behind it is seen. */
    static void *Buffer(const std::array<uint8_t, HEADER> &header, const std::string &payload) {
        void *buffer = nullptr;
        EXPECT_EQ(0u, CBUF_Alloc(YSB, &buffer, static_cast<uint32_t>(payload.size())));
        uint8_t *bytes = static_cast<FakeSmbuf *>(buffer)->data;
        std::memcpy(bytes, header.data(), HEADER);
        std::memcpy(bytes + HEADER, payload.data(), payload.size());
        return buffer;
    }
    uint32_t Receive(const std::array<uint8_t, HEADER> &header, const std::string &payload) {
        void *buffer = Buffer(header, payload);
        return CHI_RecvMsgForFrag(YSB, &context, buffer, CBUF_C2D(YSB, buffer), static_cast<uint32_t>(payload.size()),
                                  &complete);
    }
    std::string Completed() const {
        const auto *smbuf = static_cast<const FakeSmbuf *>(complete);
        return std::string(reinterpret_cast<const char *>(smbuf->data) + HEADER, smbuf->size - HEADER);
    }

    SmbufFake fake;
    CHI_RECV_CTX_S context{};
    void *complete = nullptr;
};

} // namespace fragments

#endif
