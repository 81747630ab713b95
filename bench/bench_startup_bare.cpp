// The reference for the start-up benchmark: a client that does nothing but map COUNT plain,
// undecorated windows of the notes' size at the notes' places, all at once, and then waits to
// be ended. What it takes is about what the X server and the window manager alone need to take
// on that many windows: a notes program that does any work of its own for its windows cannot
// be much faster on the same machine.
//
//   bench_startup_bare COUNT WIDTH HEIGHT
//
// Plain xcb and POSIX, with the hints a notes program gives its windows: its process id, a
// position and size of its own, no decorations, and no focus asked for.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <unistd.h>
#include <vector>
#include <xcb/xcb.h>

namespace {

xcb_atom_t atom(xcb_connection_t *connection, const char *name)
{
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
        xcb_intern_atom_reply(connection,
            xcb_intern_atom(connection, 0, static_cast<uint16_t>(std::strlen(name)), name),
            nullptr),
        &std::free);
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc != 4) {
        std::fprintf(stderr, "usage: bench_startup_bare COUNT WIDTH HEIGHT\n");
        return 2;
    }
    const int count = std::atoi(argv[1]);
    const auto width = static_cast<uint16_t>(std::atoi(argv[2]));
    const auto height = static_cast<uint16_t>(std::atoi(argv[3]));

    xcb_connection_t *connection = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(connection)) {
        std::fprintf(stderr, "bench_startup_bare: no X display\n");
        return 2;
    }
    const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    const xcb_atom_t pidAtom = atom(connection, "_NET_WM_PID");
    const xcb_atom_t motifHints = atom(connection, "_MOTIF_WM_HINTS");
    const xcb_atom_t userTime = atom(connection, "_NET_WM_USER_TIME");
    const uint32_t pid = static_cast<uint32_t>(getpid());

    std::vector<xcb_window_t> windows;
    for (int i = 0; i < count; ++i) {
        // The places bench_startup_seed gives the notes.
        const auto x = static_cast<int16_t>((i * 37) % (screen->width_in_pixels - width));
        const auto y
            = static_cast<int16_t>(30 + (i * 23) % (screen->height_in_pixels - height - 30));
        const xcb_window_t window = xcb_generate_id(connection);
        const uint32_t values[]
            = { screen->white_pixel, XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY };
        xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, screen->root, x, y, width,
            height, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual,
            XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values);
        xcb_change_property(
            connection, XCB_PROP_MODE_REPLACE, window, pidAtom, XCB_ATOM_CARDINAL, 32, 1, &pid);
        const uint32_t noDecorations[5] = { 2, 0, 0, 0, 0 };
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, motifHints, motifHints, 32,
            5, noDecorations);
        const uint32_t noFocus = 0;
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, userTime, XCB_ATOM_CARDINAL,
            32, 1, &noFocus);
        // WM_NORMAL_HINTS: position and size chosen by the user (USPosition, USSize).
        uint32_t sizeHints[18]
            = { 1 | 2, static_cast<uint32_t>(x), static_cast<uint32_t>(y), width, height };
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NORMAL_HINTS,
            XCB_ATOM_WM_SIZE_HINTS, 32, 18, sizeHints);
        windows.push_back(window);
    }
    for (const xcb_window_t window : windows)
        xcb_map_window(connection, window);
    xcb_flush(connection);

    // Events are read so that the server never waits on a full queue; the watcher ends us.
    while (xcb_generic_event_t *event = xcb_wait_for_event(connection))
        std::free(event);
    xcb_disconnect(connection);
    return 0;
}
