// Starts a program and measures how long it takes until a given number of its windows of a
// given size are on screen, and how much memory it used by then.
//
//   bench_startup_watch COUNT WIDTH HEIGHT TIMEOUT_SECONDS -- PROGRAM [ARGUMENTS...]
//
// Prints "<milliseconds> <peak resident kilobytes>" and ends the program with SIGTERM. Windows
// are found through the window manager's client list (_NET_CLIENT_LIST): those whose _NET_WM_PID
// is the program's, that are viewable and have exactly the given size. Exits 1 on a timeout.
// Plain xcb and POSIX, so that the watcher itself costs the X server next to nothing.

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <set>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>
#include <xcb/xcb.h>

namespace {

template <class Reply> using Owned = std::unique_ptr<Reply, decltype(&std::free)>;
template <class Reply> Owned<Reply> own(Reply *reply)
{
    return Owned<Reply>(reply, &std::free);
}

xcb_atom_t atom(xcb_connection_t *connection, const char *name)
{
    const auto reply = own(xcb_intern_atom_reply(connection,
        xcb_intern_atom(connection, 0, static_cast<uint16_t>(std::strlen(name)), name), nullptr));
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

std::vector<xcb_window_t> clientList(
    xcb_connection_t *connection, xcb_window_t root, xcb_atom_t list)
{
    std::vector<xcb_window_t> windows;
    const auto reply = own(xcb_get_property_reply(connection,
        xcb_get_property(connection, 0, root, list, XCB_ATOM_WINDOW, 0, 1 << 16), nullptr));
    if (!reply || reply->format != 32)
        return windows;
    const auto *data = static_cast<const xcb_window_t *>(xcb_get_property_value(reply.get()));
    windows.assign(data, data + xcb_get_property_value_length(reply.get()) / 4);
    return windows;
}

long windowPid(xcb_connection_t *connection, xcb_window_t window, xcb_atom_t pidAtom)
{
    const auto reply = own(xcb_get_property_reply(connection,
        xcb_get_property(connection, 0, window, pidAtom, XCB_ATOM_CARDINAL, 0, 1), nullptr));
    if (!reply || reply->format != 32 || xcb_get_property_value_length(reply.get()) < 4)
        return -1;
    return *static_cast<const uint32_t *>(xcb_get_property_value(reply.get()));
}

bool isViewableWithSize(xcb_connection_t *connection, xcb_window_t window, int width, int height)
{
    const auto attributes = own(xcb_get_window_attributes_reply(
        connection, xcb_get_window_attributes(connection, window), nullptr));
    if (!attributes || attributes->map_state != XCB_MAP_STATE_VIEWABLE)
        return false;
    const auto geometry
        = own(xcb_get_geometry_reply(connection, xcb_get_geometry(connection, window), nullptr));
    return geometry && geometry->width == width && geometry->height == height;
}

long peakResidentKilobytes(pid_t pid)
{
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind("VmHWM:", 0) == 0)
            return std::strtol(line.c_str() + 6, nullptr, 10);
    }
    return -1;
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc < 7 || std::strcmp(argv[5], "--") != 0) {
        std::fprintf(stderr,
            "usage: bench_startup_watch COUNT WIDTH HEIGHT TIMEOUT_SECONDS -- PROGRAM [ARGS...]\n");
        return 2;
    }
    const size_t count = std::strtoul(argv[1], nullptr, 10);
    const int width = std::atoi(argv[2]);
    const int height = std::atoi(argv[3]);
    const auto timeout = std::chrono::seconds(std::atoi(argv[4]));

    xcb_connection_t *connection = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(connection)) {
        std::fprintf(stderr, "bench_startup_watch: no X display\n");
        return 2;
    }
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    const xcb_atom_t list = atom(connection, "_NET_CLIENT_LIST");
    const xcb_atom_t pidAtom = atom(connection, "_NET_WM_PID");

    const auto start = std::chrono::steady_clock::now();
    const pid_t pid = fork();
    if (pid == 0) {
        execvp(argv[6], argv + 6);
        std::perror("bench_startup_watch: exec");
        _exit(127);
    }

    std::set<xcb_window_t> counted;
    std::set<xcb_window_t> others; // windows of other programs, looked at once
    long elapsed = -1;
    while (std::chrono::steady_clock::now() - start < timeout) {
        for (const xcb_window_t window : clientList(connection, root, list)) {
            if (counted.count(window) || others.count(window))
                continue;
            const long owner = windowPid(connection, window, pidAtom);
            if (owner >= 0 && owner != pid) {
                others.insert(window);
                continue;
            }
            if (owner == pid && isViewableWithSize(connection, window, width, height))
                counted.insert(window);
        }
        if (counted.size() >= count) {
            elapsed = static_cast<long>(std::chrono::duration_cast<std::chrono::milliseconds>(
                std::chrono::steady_clock::now() - start)
                                            .count());
            break;
        }
        int status = 0;
        if (waitpid(pid, &status, WNOHANG) == pid) {
            std::fprintf(stderr, "bench_startup_watch: the program ended early\n");
            return 1;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    // Windows still settle for a moment after they map; the peak includes that.
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    const long peak = peakResidentKilobytes(pid);
    kill(pid, SIGTERM);
    // A program busy with its windows may not answer at once; it is not waited for forever.
    int status = 0;
    const auto stopAsked = std::chrono::steady_clock::now();
    while (waitpid(pid, &status, WNOHANG) != pid) {
        if (std::chrono::steady_clock::now() - stopAsked > std::chrono::seconds(5)) {
            kill(pid, SIGKILL);
            waitpid(pid, &status, 0);
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    xcb_disconnect(connection);
    if (elapsed < 0) {
        std::fprintf(stderr, "bench_startup_watch: %zu of %zu windows after the timeout\n",
            counted.size(), count);
        return 1;
    }
    std::printf("%ld %ld\n", elapsed, peak);
    return 0;
}
