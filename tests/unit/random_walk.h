/* Random numbers for tests that walk at random, from a seed that can be told and set. */
#ifndef UVEL_TESTS_UNIT_RANDOM_WALK_H
#define UVEL_TESTS_UNIT_RANDOM_WALK_H

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>

/* Set UVEL_TEST_SEED to walk another way, or to walk one again. */
class RandomWalk {
  public:
    explicit RandomWalk(uint32_t usual_seed) {
        const char *text = std::getenv("UVEL_TEST_SEED");
        seed_ = text == nullptr ? usual_seed : static_cast<uint32_t>(std::strtoul(text, nullptr, 0));
        std::printf("seed %u\n", seed_);
        random_.seed(seed_);
    }

    uint32_t Seed() const { return seed_; }

    /* 0 to end - 1. */
    uint32_t Below(uint32_t end) { return static_cast<uint32_t>((uint64_t{random_()} * end) >> 32); }

    /* True once in n times. */
    bool OnceIn(uint32_t n) { return Below(n) == 0; }

  private:
    uint32_t seed_;
    std::mt19937 random_;
};

#endif
