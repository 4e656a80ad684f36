"""A program of another toolkit that takes files: prints "over" while a drag is above it, then what was dropped."""
import gi

gi.require_version("Gdk", "3.0")
gi.require_version("Gtk", "3.0")
from gi.repository import Gdk, Gtk  # noqa: E402


def say(text):
    print(text, flush=True)


def received(widget, context, x, y, data, info, time):
    for uri in data.get_uris():
        say(uri)
    say(f"action {context.get_selected_action().value_nicks[0]}")


window = Gtk.Window(title="Drop target")
window.set_default_size(300, 200)
window.drag_dest_set(Gtk.DestDefaults.ALL, [], Gdk.DragAction.COPY | Gdk.DragAction.MOVE)
window.drag_dest_add_uri_targets()
window.connect("drag-motion", lambda *_: say("over"))
window.connect("drag-data-received", received)
window.connect("destroy", Gtk.main_quit)
window.show_all()
Gtk.main()
