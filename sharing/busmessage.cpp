#include "sharing/busmessage.h"

#include <QHash>

namespace
{

bool append(sd_bus_message* message, const QVariant& value);

/// The type of a value as the bus writes it; empty for those it cannot carry from here.
QByteArray signatureOf(const QVariant& value)
{
    static const QHash<int, QByteArray> signatures{
        {QMetaType::QString, "s"},      {QMetaType::Bool, "b"},
        {QMetaType::Int, "i"},          {QMetaType::UInt, "u"},
        {QMetaType::LongLong, "x"},     {QMetaType::ULongLong, "t"},
        {QMetaType::QStringList, "as"}, {QMetaType::QVariantMap, "a{sv}"},
        {qMetaTypeId<BusPath>(), "o"},  {qMetaTypeId<BusVariant>(), "v"}};
    return signatures.value(value.typeId());
}

bool appendText(sd_bus_message* message, char type, const QString& text)
{
    return sd_bus_message_append_basic(message, type, text.toUtf8().constData()) >= 0;
}

template<typename Number>
bool appendNumber(sd_bus_message* message, char type, Number number)
{
    return sd_bus_message_append_basic(message, type, &number) >= 0;
}

bool appendVariant(sd_bus_message* message, const QVariant& value)
{
    const QByteArray signature = signatureOf(value);
    return !signature.isEmpty() &&
           sd_bus_message_open_container(message, SD_BUS_TYPE_VARIANT, signature.constData()) >=
               0 &&
           append(message, value) && sd_bus_message_close_container(message) >= 0;
}

bool appendList(sd_bus_message* message, const QStringList& list)
{
    if (sd_bus_message_open_container(message, SD_BUS_TYPE_ARRAY, "s") < 0)
        return false;
    for (const QString& text : list) {
        if (!appendText(message, SD_BUS_TYPE_STRING, text))
            return false;
    }
    return sd_bus_message_close_container(message) >= 0;
}

bool appendMap(sd_bus_message* message, const QVariantMap& map)
{
    if (sd_bus_message_open_container(message, SD_BUS_TYPE_ARRAY, "{sv}") < 0)
        return false;
    for (auto entry = map.begin(); entry != map.end(); ++entry) {
        if (sd_bus_message_open_container(message, SD_BUS_TYPE_DICT_ENTRY, "sv") < 0 ||
            !appendText(message, SD_BUS_TYPE_STRING, entry.key()) ||
            !appendVariant(message, *entry) || sd_bus_message_close_container(message) < 0)
            return false;
    }
    return sd_bus_message_close_container(message) >= 0;
}

bool append(sd_bus_message* message, const QVariant& value)
{
    const QByteArray signature = signatureOf(value);
    if (signature == "as")
        return appendList(message, value.toStringList());
    if (signature == "a{sv}")
        return appendMap(message, value.toMap());
    switch (signature.isEmpty() ? '\0' : signature.front()) {
    case SD_BUS_TYPE_STRING:
        return appendText(message, SD_BUS_TYPE_STRING, value.toString());
    case SD_BUS_TYPE_OBJECT_PATH:
        return appendText(message, SD_BUS_TYPE_OBJECT_PATH, value.value<BusPath>().path);
    case SD_BUS_TYPE_VARIANT:
        return appendVariant(message, value.value<BusVariant>().value);
    case SD_BUS_TYPE_BOOLEAN:
        return appendNumber(message, SD_BUS_TYPE_BOOLEAN, int(value.toBool()));
    case SD_BUS_TYPE_INT32:
        return appendNumber(message, SD_BUS_TYPE_INT32, qint32(value.toInt()));
    case SD_BUS_TYPE_UINT32:
        return appendNumber(message, SD_BUS_TYPE_UINT32, quint32(value.toUInt()));
    case SD_BUS_TYPE_INT64:
        return appendNumber(message, SD_BUS_TYPE_INT64, qint64(value.toLongLong()));
    case SD_BUS_TYPE_UINT64:
        return appendNumber(message, SD_BUS_TYPE_UINT64, quint64(value.toULongLong()));
    default:
        return false;
    }
}

/// Reads the next value; an invalid one if there is none that can be read.
QVariant next(sd_bus_message* message);

template<typename Raw, typename Value = Raw>
QVariant readNumber(sd_bus_message* message, char type)
{
    Raw number{};
    return sd_bus_message_read_basic(message, type, &number) > 0 ? QVariant(Value(number))
                                                                 : QVariant();
}

QVariant readBasic(sd_bus_message* message, char type)
{
    const char* text = nullptr;
    switch (type) {
    case SD_BUS_TYPE_BOOLEAN:
        return readNumber<int, bool>(message, type);
    case SD_BUS_TYPE_BYTE:
        return readNumber<quint8, uint>(message, type);
    case SD_BUS_TYPE_INT16:
        return readNumber<qint16, int>(message, type);
    case SD_BUS_TYPE_UINT16:
        return readNumber<quint16, uint>(message, type);
    case SD_BUS_TYPE_INT32:
        return readNumber<qint32, int>(message, type);
    case SD_BUS_TYPE_UINT32:
        return readNumber<quint32, uint>(message, type);
    case SD_BUS_TYPE_INT64:
        return readNumber<qint64, qlonglong>(message, type);
    case SD_BUS_TYPE_UINT64:
        return readNumber<quint64, qulonglong>(message, type);
    case SD_BUS_TYPE_DOUBLE:
        return readNumber<double>(message, type);
    case SD_BUS_TYPE_STRING:
    case SD_BUS_TYPE_OBJECT_PATH:
    case SD_BUS_TYPE_SIGNATURE:
        if (sd_bus_message_read_basic(message, type, &text) > 0)
            return QString::fromUtf8(text);
        return {};
    default:
        // A file that was passed on: nothing here takes any.
        return {};
    }
}

/// All values up to the end of the container or message that is being read.
QVariantList readAll(sd_bus_message* message)
{
    QVariantList result;
    while (sd_bus_message_at_end(message, 0) == 0) {
        const QVariant value = next(message);
        if (!value.isValid())
            break;
        result.append(value);
    }
    return result;
}

QVariant readArray(sd_bus_message* message, const QByteArray& contents)
{
    const QVariantList values = readAll(message);
    if (contents == "s" || contents == "o")
        return QVariant(values).toStringList();
    if (!contents.startsWith('{'))
        return values;
    QVariantMap map;
    for (const QVariant& value : values) {
        const QVariantList entry = value.toList();
        map.insert(entry.value(0).toString(), entry.value(1));
    }
    return map;
}

QVariant next(sd_bus_message* message)
{
    char type = '\0';
    const char* contents = nullptr;
    if (sd_bus_message_peek_type(message, &type, &contents) <= 0)
        return {};
    if (contents == nullptr)
        return readBasic(message, type);
    const QByteArray inside(contents);
    if (sd_bus_message_enter_container(message, type, contents) <= 0)
        return {};
    QVariant result;
    if (type == SD_BUS_TYPE_VARIANT)
        result = next(message);
    else if (type == SD_BUS_TYPE_ARRAY)
        result = readArray(message, inside);
    else
        result = readAll(message);
    // Not when something inside could not be read.
    return sd_bus_message_exit_container(message) >= 0 ? result : QVariant();
}

} // namespace

BusMessagePointer BusCall::make(sd_bus* bus) const
{
    sd_bus_message* made = nullptr;
    if (sd_bus_message_new_method_call(bus, &made, service.toUtf8().constData(),
                                       path.toUtf8().constData(), interface.toUtf8().constData(),
                                       method.toUtf8().constData()) < 0)
        return nullptr;
    BusMessagePointer message(made);
    sd_bus_message_set_auto_start(made, startsService ? 1 : 0);
    for (const QVariant& argument : arguments) {
        if (!append(made, argument))
            return nullptr;
    }
    return message;
}

BusMessage BusMessage::read(sd_bus_message* message)
{
    BusMessage result;
    result.sender = QString::fromUtf8(sd_bus_message_get_sender(message));
    result.path = QString::fromUtf8(sd_bus_message_get_path(message));
    result.interface = QString::fromUtf8(sd_bus_message_get_interface(message));
    result.member = QString::fromUtf8(sd_bus_message_get_member(message));
    result.signature = QString::fromUtf8(sd_bus_message_get_signature(message, 1));
    if (const sd_bus_error* error = sd_bus_message_get_error(message)) {
        result.errorName = QString::fromUtf8(error->name);
        result.errorText = QString::fromUtf8(error->message);
    } else {
        result.arguments = readAll(message);
    }
    return result;
}
