/* virtual-pointer: a mouse for a Wayland desktop, moved by lines on the standard input. Each line is answered by "done" when
 * the compositor has taken note of it; the first "done" says that the mouse is there.
 *
 *     move X Y WIDTH HEIGHT    to that point of a desktop of that size
 *     press BUTTON
 *     release BUTTON           by its number in linux/input-event-codes.h: 272 left, 273 right
 *
 * The mouse is there for as long as the program runs, and with it the desktop's readiness to send pointer events.
 */
#include "wlr-virtual-pointer.h"

#include <wayland-client.h>

#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

static struct zwlr_virtual_pointer_manager_v1* manager;

static void announced(void* data, struct wl_registry* registry, uint32_t name,
    const char* interface, uint32_t version)
{
    (void)data;
    (void)version;
    if (strcmp(interface, zwlr_virtual_pointer_manager_v1_interface.name) == 0)
        manager = wl_registry_bind(registry, name, &zwlr_virtual_pointer_manager_v1_interface, 1);
}

static void withdrawn(void* data, struct wl_registry* registry, uint32_t name)
{
    (void)data;
    (void)registry;
    (void)name;
}

static uint32_t milliseconds(void)
{
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return (uint32_t)(now.tv_sec * 1000 + now.tv_nsec / 1000000);
}

static void fail(const char* reason)
{
    fprintf(stderr, "virtual-pointer: %s\n", reason);
    exit(1);
}

static void confirm(struct wl_display* display)
{
    if (wl_display_roundtrip(display) < 0)
        fail("the desktop has gone");
    puts("done");
    fflush(stdout);
}

int main(void)
{
    struct wl_display* display = wl_display_connect(NULL);
    if (!display)
        fail("there is no Wayland desktop");
    static const struct wl_registry_listener listener = {announced, withdrawn};
    wl_registry_add_listener(wl_display_get_registry(display), &listener, NULL);
    wl_display_roundtrip(display);
    if (!manager)
        fail("the desktop knows no virtual pointers");
    struct zwlr_virtual_pointer_v1* pointer =
        zwlr_virtual_pointer_manager_v1_create_virtual_pointer(manager, NULL);
    confirm(display);

    char line[100];
    while (fgets(line, sizeof line, stdin)) {
        unsigned x = 0;
        unsigned y = 0;
        unsigned width = 0;
        unsigned height = 0;
        unsigned button = 0;
        if (sscanf(line, "move %u %u %u %u", &x, &y, &width, &height) == 4)
            zwlr_virtual_pointer_v1_motion_absolute(pointer, milliseconds(), x, y, width, height);
        else if (sscanf(line, "press %u", &button) == 1)
            zwlr_virtual_pointer_v1_button(
                pointer, milliseconds(), button, WL_POINTER_BUTTON_STATE_PRESSED);
        else if (sscanf(line, "release %u", &button) == 1)
            zwlr_virtual_pointer_v1_button(
                pointer, milliseconds(), button, WL_POINTER_BUTTON_STATE_RELEASED);
        else
            fail("unknown line");
        zwlr_virtual_pointer_v1_frame(pointer);
        confirm(display);
    }
    return 0;
}
