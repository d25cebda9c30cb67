"""A template of dbusmock: the user's object exchange service, as far as it sends files.

The transfers it makes stay "queued"; a test moves them on with UpdateProperties. With its property
Instant a file is through before the caller hears of the transfer.
"""

import os

import dbus
from dbusmock import OBJECT_MANAGER_IFACE, mockobject

BUS_NAME = "org.bluez.obex"
MAIN_OBJ = "/"
SYSTEM_BUS = False
IS_OBJECT_MANAGER = True

CLIENT_PATH = "/org/bluez/obex"
CLIENT = "org.bluez.obex.Client1"
SESSION = "org.bluez.obex.Session1"
OBJECT_PUSH = "org.bluez.obex.ObjectPush1"
TRANSFER = "org.bluez.obex.Transfer1"


def load(mock, _parameters):
    mock.AddObject(CLIENT_PATH, CLIENT, {"Instant": dbus.Boolean(False)}, [
        ("CreateSession", "sa{sv}", "o", create_session),
        ("RemoveSession", "o", "", remove_session),
    ])


def failure(message, kind="Failed"):
    return dbus.exceptions.DBusException(message, name="org.bluez.obex.Error." + kind)


def free_path(prefix):
    number = 0
    while f"{prefix}{number}" in mockobject.objects:
        number += 1
    return f"{prefix}{number}"


def take_away(path, interfaces):
    root = mockobject.objects["/"]
    root.RemoveObject(path)
    root.EmitSignal(OBJECT_MANAGER_IFACE, "InterfacesRemoved", "oas",
                    [dbus.ObjectPath(path), interfaces])


def create_session(client, destination, how):
    if how.get("Target") != "opp":
        raise failure("Invalid Target", "InvalidArguments")
    path = free_path(CLIENT_PATH + "/client/session")
    client.AddObject(path, SESSION, {
        "Source": dbus.String(how.get("Source", "")),
        "Destination": dbus.String(destination),
        "Target": dbus.String("00001105-0000-1000-8000-00805f9b34fb"),
    }, [])
    mockobject.objects[path].AddMethods(OBJECT_PUSH, [("SendFile", "s", "oa{sv}", send_file)])
    return dbus.ObjectPath(path)


def remove_session(_client, path):
    if path not in mockobject.objects:
        raise failure("No such session", "NotAuthorized")
    for transfer in [each for each in mockobject.objects if each.startswith(path + "/")]:
        take_away(transfer, [TRANSFER])
    take_away(path, [SESSION, OBJECT_PUSH])


def send_file(session, name):
    try:
        with open(name, "rb") as file:
            size = os.fstat(file.fileno()).st_size
    except OSError as error:
        raise failure(error.strerror) from error
    path = free_path(session.path + "/transfer")
    properties = {
        "Status": dbus.String("queued"),
        "Session": dbus.ObjectPath(session.path),
        "Name": dbus.String(os.path.basename(name)),
        "Filename": dbus.String(name),
        "Size": dbus.UInt64(size),
        "Transferred": dbus.UInt64(0),
    }
    session.AddObject(path, TRANSFER, dict(properties), [("Cancel", "", "", cancel)])
    if mockobject.objects[CLIENT_PATH].props[CLIENT]["Instant"]:
        mockobject.objects[path].UpdateProperties(TRANSFER, {
            "Status": dbus.String("complete"), "Transferred": dbus.UInt64(size)})
        take_away(path, [TRANSFER])
    return dbus.ObjectPath(path), properties


def cancel(transfer):
    transfer.UpdateProperties(TRANSFER, {"Status": dbus.String("error")})
