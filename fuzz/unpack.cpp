// SPDX-License-Identifier: GPL-3.0-or-later
#include "fuzz/unpack.h"

#include <zlib.h>

#include <cstdint>

#include "fuzz/fuzzing.h"

namespace davo::fuzz {

namespace {

std::uint32_t Number(const std::string& bytes, std::size_t at, int size) {
    Require(at + static_cast<std::size_t>(size) <= bytes.size(), "an archive has its fields");
    std::uint32_t number = 0;
    for (int i = size; i-- > 0;)
        number = number << 8U | static_cast<unsigned char>(bytes[at + static_cast<std::size_t>(i)]);
    return number;
}

// Without the header that Qt's own function expects.
QByteArray Inflated(const std::string& packed, std::size_t size) {
    QByteArray bytes(static_cast<qsizetype>(size), '\0');
    z_stream stream{};
    Require(inflateInit2(&stream, -MAX_WBITS) == Z_OK, "inflate");
    std::string input = packed;
    stream.next_in = reinterpret_cast<Bytef*>(input.data());
    stream.avail_in = static_cast<uInt>(input.size());
    stream.next_out = reinterpret_cast<Bytef*>(bytes.data());
    stream.avail_out = static_cast<uInt>(bytes.size());
    const int result = inflate(&stream, Z_FINISH);
    inflateEnd(&stream);
    Require(result == Z_STREAM_END && stream.total_out == size, "a part has its size");
    return bytes;
}

}  // namespace

Parts Unpacked(const std::string& archive) {
    constexpr std::size_t kEntryBytes = 46;
    constexpr std::size_t kLocalBytes = 30;
    const std::size_t end = archive.rfind("PK\5\6");
    Require(end != std::string::npos, "an archive has its end");
    std::size_t at = Number(archive, end + 16, 4);
    Parts parts;
    for (std::uint32_t left = Number(archive, end + 10, 2); left > 0; --left) {
        Require(archive.compare(at, 4, "PK\1\2") == 0, "an entry of the directory");
        const std::uint32_t method = Number(archive, at + 10, 2);
        const std::uint32_t sum = Number(archive, at + 16, 4);
        const std::uint32_t packedSize = Number(archive, at + 20, 4);
        const std::uint32_t size = Number(archive, at + 24, 4);
        const std::uint32_t nameSize = Number(archive, at + 28, 2);
        const std::uint32_t extra = Number(archive, at + 30, 2) + Number(archive, at + 32, 2);
        const std::uint32_t local = Number(archive, at + 42, 4);
        const std::size_t from =
            local + kLocalBytes + Number(archive, local + 26, 2) + Number(archive, local + 28, 2);
        const std::string packed = archive.substr(from, packedSize);
        const QByteArray bytes =
            method == 0 ? QByteArray::fromStdString(packed) : Inflated(packed, size);
        const auto* data = reinterpret_cast<const Bytef*>(bytes.constData());
        Require(crc32(0, data, static_cast<uInt>(bytes.size())) == sum, "a part has its sum");
        parts[archive.substr(at + kEntryBytes, nameSize)] = bytes;
        at += kEntryBytes + nameSize + extra;
    }
    return parts;
}

}  // namespace davo::fuzz
