// uvelctl show: one view of a running uveld, once. uvelctl watch: the same again and again.

#include <chrono>
#include <iostream>
#include <thread>

#include "commands.h"
#include "inspector_client.h"
#include "render.h"

namespace uvelctl {

void Show(const Options &options, const Look &look) {
    InspectorClient uveld(options);
    std::cout << Render(options, uveld.Ask({look.view, look.arguments})) << std::flush;
}

void Watch(const Options &options, const Look &look) {
    constexpr char CLEAR_SCREEN[] = "\033[H\033[2J\033[3J";
    InspectorClient uveld(options);
    for (uint32_t i = 0; look.count == 0 || i < look.count; ++i) {
        if (i != 0)
            std::this_thread::sleep_for(std::chrono::duration<double>(look.seconds));
        const std::string shown = Render(options, uveld.Ask({look.view, look.arguments}));
        std::cout << (options.json ? "" : CLEAR_SCREEN) << shown << std::flush;
    }
}

} // namespace uvelctl
