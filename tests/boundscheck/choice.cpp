// Fails unless the functions give the results that tell libboundscheck from others of its names.

#include <cstring>
#include <securec.h>

int main() {
    char room[4] = {'x', 'x', 'x', 'x'};
    const bool resets = memcpy_s(room, sizeof room, "12345", 5) == 162 && std::memcmp(room, "\0\0\0\0", 4) == 0;
    return resets && strcpy_s(room, sizeof room, "abc") == 0 && std::strcmp(room, "abc") == 0 ? 0 : 1;
}
