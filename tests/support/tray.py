"""A desktop's tray, and what a user sees and does there."""
import dbus

from support.bus import PROPERTIES, Service, call
from support.waiting import wait_until

WATCHER = "org.kde.StatusNotifierWatcher"
ITEM = "org.kde.StatusNotifierItem"
MENU = "com.canonical.dbusmenu"


class Tray(Service):
    def __init__(self, environment, has_host=True):
        super().__init__(environment, WATCHER, "/StatusNotifierWatcher",
                         [(WATCHER, "RegisterStatusNotifierItem", "s", "", "")],
                         {"IsStatusNotifierHostRegistered": has_host, "ProtocolVersion": dbus.Int32(0),
                          "RegisteredStatusNotifierItems": dbus.Array([], "s")})

    def set_host(self, is_there):
        """Sets whether a host shows the icons; a watcher may exist without one."""
        self.mock.UpdateProperties(WATCHER, {"IsStatusNotifierHostRegistered": is_there})
        self.signal(WATCHER, "StatusNotifierHostRegistered" if is_there else "StatusNotifierHostUnregistered")

    def icons(self):
        items = dict.fromkeys(str(arguments[0]) for arguments in self.calls("RegisterStatusNotifierItem"))
        return [Icon(self.bus, item) for item in items if self.bus.name_has_owner(item)]

    def icon(self):
        """Waits for exactly one icon, and returns it."""
        wait_until(lambda: len(self.icons()) == 1, what="the one icon in the tray")
        return self.icons()[0]


class Icon:
    def __init__(self, bus, item):
        self.bus, self.item = bus, item

    def get(self, name):
        return call(self.bus, self.item, "/StatusNotifierItem", PROPERTIES, "Get", ITEM, name, signature="ss")

    def do(self, action, *arguments, signature):
        call(self.bus, self.item, "/StatusNotifierItem", ITEM, action, *arguments, signature=signature)

    def click(self):
        self.do("Activate", 0, 0, signature="ii")

    def menu(self):
        """The labels of its menu, with their identifiers."""
        _, (_, _, entries) = call(self.bus, self.item, self.get("Menu"), MENU, "GetLayout", 0, -1, dbus.Array([], "s"),
                                  signature="iias")
        return {str(properties["label"]): number for number, properties, _ in entries if "label" in properties}

    def choose(self, label):
        call(self.bus, self.item, self.get("Menu"), MENU, "Event", self.menu()[label], "clicked", "", 0,
             signature="isvu")
