#include "plugins/lyraplayer/tags.h"

#include "files/names.h"
#include "files/regularfile.h"

#include <QFile>

#include <algorithm>
#include <asffile.h>
#include <attachedpictureframe.h>
#include <fileref.h>
#include <flacfile.h>
#include <id3v2tag.h>
#include <mp4file.h>
#include <mpegfile.h>
#include <taglib.h>
#include <tiostream.h>
#include <wavfile.h>
#include <xiphcomment.h>

namespace
{

#if TAGLIB_MAJOR_VERSION >= 2
using Offset = TagLib::offset_t;
using Start = TagLib::offset_t;
using Size = size_t;
#else
using Offset = long;
using Start = unsigned long;
using Size = unsigned long;
#endif

/// A file that can only be read, and only so much of it.
class LimitedStream : public TagLib::IOStream
{
public:
    LimitedStream(const QByteArray& path, const std::atomic<bool>& cancelled)
        : path_(path), cancelled_(cancelled)
    {
        openRegular(file_, decodeName(path), QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

    TagLib::FileName name() const override { return path_.constData(); }
    bool readOnly() const override { return true; }
    bool isOpen() const override { return file_.isOpen(); }
    Offset tell() const override { return Offset(file_.pos()); }
    Offset length() override { return Offset(file_.size()); }

    TagLib::ByteVector readBlock(Size length) override
    {
        const qint64 rest = std::min(file_.size() - file_.pos(), MaxTagBytes - read_);
        const qint64 count = std::min(qint64(std::min(length, Size(MaxTagBytes))), rest);
        if (cancelled_ || count <= 0)
            return {};
        const QByteArray bytes = file_.read(count);
        read_ += bytes.size();
        return {bytes.constData(), unsigned(bytes.size())};
    }

    void seek(Offset offset, Position from) override
    {
        const qint64 start = from == End ? file_.size() : from == Current ? file_.pos() : 0;
        file_.seek(std::max(start + qint64(offset), qint64(0)));
    }

    void insert(const TagLib::ByteVector& /*data*/, Start /*start*/, Size /*replace*/) override {}
    void removeBlock(Start /*start*/, Size /*length*/) override {}
    void writeBlock(const TagLib::ByteVector& /*data*/) override {}
    void truncate(Offset /*length*/) override {}

private:
    QByteArray path_;
    const std::atomic<bool>& cancelled_;
    QFile file_;
    qint64 read_ = 0;
};

QByteArray bytesOf(const TagLib::ByteVector& bytes)
{
    return {bytes.data(), qsizetype(bytes.size())};
}

QByteArray dataOf(const TagLib::ID3v2::AttachedPictureFrame& picture)
{
    return bytesOf(picture.picture());
}

QByteArray dataOf(const TagLib::FLAC::Picture& picture)
{
    return bytesOf(picture.data());
}

/// The front cover among pictures of one kind, or else the first.
template<typename Picture, typename Pictures>
QByteArray chosen(const Pictures& pictures)
{
    const Picture* best = nullptr;
    for (const auto* each : pictures) {
        const auto* picture = dynamic_cast<const Picture*>(each);
        if (picture == nullptr)
            continue;
        const bool isFront = picture->type() == Picture::FrontCover;
        if (best == nullptr || (isFront && best->type() != Picture::FrontCover))
            best = picture;
    }
    return best == nullptr ? QByteArray() : dataOf(*best);
}

QByteArray pictureIn(const TagLib::ID3v2::Tag* tag)
{
    if (tag == nullptr)
        return {};
    return chosen<TagLib::ID3v2::AttachedPictureFrame>(tag->frameList("APIC"));
}

QByteArray pictureIn(TagLib::FLAC::File& file)
{
    const QByteArray own = chosen<TagLib::FLAC::Picture>(file.pictureList());
    return own.isEmpty() ? pictureIn(file.ID3v2Tag()) : own;
}

QByteArray pictureIn(TagLib::MP4::Tag& tag)
{
    const TagLib::MP4::CoverArtList covers = tag.item("covr").toCoverArtList();
    return covers.isEmpty() ? QByteArray() : bytesOf(covers.front().data());
}

QByteArray pictureIn(const TagLib::ASF::Tag& tag)
{
    const TagLib::ASF::AttributeListMap& all = tag.attributeListMap();
    const auto found = all.find("WM/Picture");
    if (found == all.end() || found->second.isEmpty())
        return {};
    const TagLib::ASF::Picture picture = found->second.front().toPicture();
    return picture.isValid() ? bytesOf(picture.picture()) : QByteArray();
}

QByteArray pictureIn(TagLib::File& file)
{
    if (auto* mpeg = dynamic_cast<TagLib::MPEG::File*>(&file))
        return pictureIn(mpeg->ID3v2Tag());
    if (auto* wav = dynamic_cast<TagLib::RIFF::WAV::File*>(&file))
        return pictureIn(wav->ID3v2Tag());
    if (auto* flac = dynamic_cast<TagLib::FLAC::File*>(&file))
        return pictureIn(*flac);
    if (auto* id3 = dynamic_cast<TagLib::ID3v2::Tag*>(file.tag()))
        return pictureIn(id3);
    if (auto* ogg = dynamic_cast<TagLib::Ogg::XiphComment*>(file.tag()))
        return chosen<TagLib::FLAC::Picture>(ogg->pictureList());
    if (auto* mp4 = dynamic_cast<TagLib::MP4::Tag*>(file.tag()))
        return pictureIn(*mp4);
    if (auto* asf = dynamic_cast<TagLib::ASF::Tag*>(file.tag()))
        return pictureIn(*asf);
    return {};
}

} // namespace

QString tagLine(const QString& text)
{
    constexpr qsizetype Longest = 300;
    // Of what is far longer not even the blanks are worth to be looked for.
    return text.left(8 * Longest).simplified().left(Longest);
}

TrackTags readTags(const QByteArray& file, bool withPicture, const std::atomic<bool>& cancelled)
{
    LimitedStream stream(file, cancelled);
    if (!stream.isOpen())
        return {};
    const TagLib::FileRef found(&stream, false);
    if (found.isNull() || found.tag() == nullptr)
        return {};
    TrackTags tags;
    tags.title = tagLine(QString::fromStdString(found.tag()->title().to8Bit(true)));
    if (withPicture)
        tags.picture = pictureIn(*found.file());
    return tags;
}
