// close-window WINDOW_ID: asks an X window to close as a window manager's close button does, with
// a WM_PROTOCOLS message carrying WM_DELETE_WINDOW, sent to the window itself.
#include <X11/Xlib.h>

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: close-window WINDOW_ID\n");
    return 2;
  }
  Display* display = XOpenDisplay(nullptr);
  if (display == nullptr) {
    std::fprintf(stderr, "close-window: cannot open the display\n");
    return 1;
  }
  const Window window = std::strtoul(argv[1], nullptr, 0);
  XEvent event = {};
  event.xclient.type = ClientMessage;
  event.xclient.window = window;
  event.xclient.message_type = XInternAtom(display, "WM_PROTOCOLS", False);
  event.xclient.format = 32;
  event.xclient.data.l[0] = static_cast<long>(XInternAtom(display, "WM_DELETE_WINDOW", False));
  event.xclient.data.l[1] = CurrentTime;
  const Status sent = XSendEvent(display, window, False, NoEventMask, &event);
  XCloseDisplay(display);  // sends what is queued
  return sent != 0 ? 0 : 1;
}
