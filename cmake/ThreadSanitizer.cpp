/// What every program that is built with the thread sanitizer tells it, without any setting in the
/// environment: tests start programs with environments of their own, and as other users.
///
/// The distribution's libraries are built without the sanitizer. It sees what they do with memory,
/// descriptors and the C library's locks, yet not the futexes and inlined atomics by which they do it
/// safely.

#include <sched.h>
#include <sys/types.h>

#include <cstdarg>

// NOLINTBEGIN(bugprone-reserved-identifier): the names are the sanitizer's
extern "C" {

const char* __tsan_default_options();
const char* __tsan_default_options()
{
    return "second_deadlock_stack=1:history_size=7";
}

/// Only whole libraries, and only what they call themselves: such a line leaves out no access of our own
/// code, whoever has called it. A line that begins with "race:" would, for it fits every report with the
/// library anywhere in a stack, and an event loop is below everything.
const char* __tsan_default_suppressions();
const char* __tsan_default_suppressions()
{
    return
        // QMutex is a futex: neither events that are posted to another thread nor Qt's own thread for the
        // network seem to be handed over, and strings and arrays are counted by atomics nobody sees.
        "called_from_lib:libQt6Core.so.6\n"
        "called_from_lib:libQt6Network.so.6\n"
        // The raster engine has the threads of a pool paint strips of a large image, and waits for them
        // by QSemaphore.
        "called_from_lib:libQt6Gui.so.6\n"
        // Messages are handed to Qt's thread for the bus by events, and windows' events from a thread by
        // a queue of atomics.
        "called_from_lib:libQt6DBus.so.6\n"
        "called_from_lib:libdbus-1.so.3\n"
        "called_from_lib:libQt6XcbQpa.so.6\n"
        // They destroy locks that they still hold, as the last ones who know a connection.
        "called_from_lib:libX11.so.6\n"
        "called_from_lib:libxcb.so.1\n"
        // Events come from a thread here, too, and locks of the one library are used by the other.
        "called_from_lib:libQt6WaylandClient.so.6\n"
        "called_from_lib:libwayland-client.so.0\n"
        // Locked by one of those above, unlocked from here: each jumps into the other as its last step.
        "called_from_lib:libQt6Widgets.so.6\n"
        "called_from_lib:libXrender.so.1\n"
        "called_from_lib:libXfixes.so.3\n"
        "called_from_lib:libffi.so.8\n"
        // The same, of a library that is unloaded, which a line of the other kind does not allow.
        "mutex:libEGL_mesa.so.0\n"
        // GMutex is a futex: a loop seems to be woken through a descriptor that nobody has announced.
        "called_from_lib:libglib-2.0.so.0\n";
}

int __interceptor_clone(int (*)(void*), void*, int, void*, pid_t*, void*, pid_t*);

/// Stands before the sanitizer's own, which takes every child for one with memory of its own. QProcess
/// starts children that share the memory: what is meant for the child's copy of the sanitizer's state
/// then befalls the parent. From the first child on, the parent's thread would seem to take no lock, and
/// no race that it runs into would be told.
int clone(int (*function)(void*), void* stack, int flags, void* argument, ...) noexcept
{
    std::va_list more;
    va_start(more, argument);
    auto* const parentId = va_arg(more, pid_t*);
    auto* const storage = va_arg(more, void*);
    auto* const childId = va_arg(more, pid_t*);
    va_end(more);
    return __interceptor_clone(
        function, stack, flags & ~CLONE_VM, argument, parentId, storage, childId);
}
}
// NOLINTEND(bugprone-reserved-identifier)
