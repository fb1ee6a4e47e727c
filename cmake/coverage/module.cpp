/* Part of every library and executable of a build that counts coverage: makes its counters known. */

extern "C" {
void uvel_coverage_add(void (*writer)());
void __gcov_dump(void);
}

__attribute__((constructor)) static void MakeKnown() {
    uvel_coverage_add(&__gcov_dump);
}
