#pragma once

#include <QMetaType>
#include <QString>
#include <QVariant>

#include <memory>
#include <systemd/sd-bus.h>

/// An object's path among the arguments of a call.
struct BusPath {
    QString path;
};

/// A value that is sent as one of any type.
struct BusVariant {
    QVariant value;
};

Q_DECLARE_METATYPE(BusPath)
Q_DECLARE_METATYPE(BusVariant)

struct BusMessageRelease {
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using BusMessagePointer = std::unique_ptr<sd_bus_message, BusMessageRelease>;

/// A call of a method of a service's object.
struct BusCall {
    QString service;
    QString path;
    QString interface;
    QString method;
    /// Texts, paths, booleans, numbers, lists of texts, maps of names to values of any type.
    QVariantList arguments = {};
    bool startsService = true; ///< whether the bus may start the service for it

    /// nullptr if the bus cannot carry it: a name is none, an argument of another type.
    BusMessagePointer make(sd_bus* bus) const;
};

/// A message that came: a reply, an error or a signal.
struct BusMessage {
    QString sender; ///< the unique name
    QString path;
    QString interface;
    QString member;
    QString errorName; ///< empty unless it is an error
    QString errorText;
    QString signature;
    /// Texts and paths are QString, what is in a variant stands for itself, dictionaries are
    /// QVariantMap by the text of their keys, arrays and structures QStringList or QVariantList.
    QVariantList arguments;

    bool isError() const { return !errorName.isEmpty(); }

    /// What cannot be read is left out, with all that follows it.
    static BusMessage read(sd_bus_message* message);
};
