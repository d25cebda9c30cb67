#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QStringList>

#include <functional>

/// What was stopped may come to its end when whoever stopped it has gone on long since; this tells
/// whoever shows the folders that it changed.
namespace LateEnds
{

using Changed = std::function<void(const QStringList& folders)>;

/// From now on `changed` is called for each such end by the event loop of the receiver's thread, as
/// long as the receiver lives. There is one receiver; call it from that thread.
void setReceiver(QObject* receiver, Changed changed);

/// What is to be called once, from whatever thread, when something in these folders or below them
/// has come to its late end. Takes no time, and does no harm while the program ends.
std::function<void()> teller(const QList<QByteArray>& folders);

} // namespace LateEnds
