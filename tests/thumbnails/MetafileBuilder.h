// Metafiles assembled byte by byte, for the tests of the structure check and
// as fuzz seeds: enhanced metafiles, Windows metafiles, placeable headers and
// device-independent bitmaps. Portable.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

namespace metafilebuilder {

using Bytes = std::vector<uint8_t>;

inline void Put16(Bytes& out, uint32_t value) {
    out.push_back(static_cast<uint8_t>(value));
    out.push_back(static_cast<uint8_t>(value >> 8));
}
inline void Put32(Bytes& out, uint32_t value) {
    Put16(out, value & 0xFFFF);
    Put16(out, value >> 16);
}
inline void Set16(Bytes& out, size_t at, uint32_t value) {
    out.at(at) = static_cast<uint8_t>(value);
    out.at(at + 1) = static_cast<uint8_t>(value >> 8);
}
inline void Set32(Bytes& out, size_t at, uint32_t value) {
    Set16(out, at, value & 0xFFFF);
    Set16(out, at + 2, value >> 16);
}
inline uint32_t Get16(const Bytes& in, size_t at) {
    return in.at(at) | static_cast<uint32_t>(in.at(at + 1)) << 8;
}
inline uint32_t Get32(const Bytes& in, size_t at) {
    return Get16(in, at) | Get16(in, at + 2) << 16;
}

// 32-bit little-endian words.
inline Bytes Words32(std::initializer_list<uint32_t> words) {
    Bytes out;
    for (uint32_t w : words) Put32(out, w);
    return out;
}
inline Bytes Concat(std::initializer_list<Bytes> parts) {
    Bytes out;
    for (const Bytes& part : parts) out.insert(out.end(), part.begin(), part.end());
    return out;
}

// A bitmap header (40 bytes, or the 12-byte core one), its colour table and
// its bits (all 0x55), as GDI takes a packed bitmap.
struct Dib {
    Bytes info;  // header and colour table
    Bytes bits;
};

inline Dib MakeDib(int32_t width, int32_t height, uint32_t bitCount, uint32_t colorEntryBytes = 4,
                   uint32_t compression = 0, uint32_t sizeImage = 0, bool core = false) {
    Dib dib;
    const uint32_t colors = bitCount <= 8 ? 1u << bitCount : 0;
    if (core) {
        Put32(dib.info, 12);
        Put16(dib.info, static_cast<uint32_t>(width));
        Put16(dib.info, static_cast<uint32_t>(height));
        Put16(dib.info, 1);
        Put16(dib.info, bitCount);
    } else {
        Put32(dib.info, 40);
        Put32(dib.info, static_cast<uint32_t>(width));
        Put32(dib.info, static_cast<uint32_t>(height));
        Put16(dib.info, 1);
        Put16(dib.info, bitCount);
        Put32(dib.info, compression);
        Put32(dib.info, sizeImage);
        Put32(dib.info, 2835);
        Put32(dib.info, 2835);
        Put32(dib.info, 0);
        Put32(dib.info, 0);
    }
    for (uint32_t i = 0; i < colors * colorEntryBytes; ++i) dib.info.push_back(static_cast<uint8_t>(i * 7));
    const int32_t rows = height < 0 ? -height : height;
    const uint32_t stride = (static_cast<uint32_t>(width) * bitCount + 31) / 32 * 4;
    const size_t bitsBytes =
        compression == 1 || compression == 2 ? sizeImage : static_cast<size_t>(stride) * rows;
    dib.bits.assign(bitsBytes, 0x55);
    return dib;
}

// ---- Enhanced metafiles ------------------------------------------------------

class EmfBuilder {
public:
    explicit EmfBuilder(uint32_t handles = 4) : handles_(handles) {}

    // A record of the type with these bytes after its type and size, padded
    // to a multiple of 4.
    EmfBuilder& Record(uint32_t type, const Bytes& body) {
        Bytes record;
        Put32(record, type);
        Put32(record, 0);
        record.insert(record.end(), body.begin(), body.end());
        while (record.size() % 4 != 0) record.push_back(0);
        Set32(record, 4, static_cast<uint32_t>(record.size()));
        records_.push_back(record);
        return *this;
    }
    // A record written exactly as given, type and size included.
    EmfBuilder& Raw(const Bytes& record) {
        records_.push_back(record);
        return *this;
    }

    // Header, records and the end record, with the header's byte and record
    // counts filled in.
    Bytes Finish(bool withEnd = true) const {
        Bytes out = Header();
        for (const Bytes& record : records_) out.insert(out.end(), record.begin(), record.end());
        uint32_t count = 1 + static_cast<uint32_t>(records_.size());
        if (withEnd) {
            Put32(out, 14);  // EMR_EOF
            Put32(out, 20);
            Put32(out, 0);
            Put32(out, 16);
            Put32(out, 20);
            ++count;
        }
        Set32(out, 48, static_cast<uint32_t>(out.size()));
        Set32(out, 52, count);
        return out;
    }

private:
    Bytes Header() const {
        Bytes h;
        Put32(h, 1);                                            // EMR_HEADER
        Put32(h, 88);                                           // size
        for (uint32_t v : {0u, 0u, 99u, 99u}) Put32(h, v);      // bounds
        for (uint32_t v : {0u, 0u, 2540u, 2540u}) Put32(h, v);  // frame, 0.01 mm
        Put32(h, 0x464D4520);                                   // " EMF"
        Put32(h, 0x10000);                                      // version
        Put32(h, 0);                                            // bytes, filled in
        Put32(h, 0);                                            // records, filled in
        Put16(h, handles_);
        Put16(h, 0);
        Put32(h, 0);  // description
        Put32(h, 0);
        Put32(h, 0);  // palette entries
        Put32(h, 1024);
        Put32(h, 768);  // device
        Put32(h, 320);
        Put32(h, 240);  // millimetres
        return h;
    }

    uint32_t handles_;
    std::vector<Bytes> records_;
};

// Bodies of common enhanced metafile records (after type and size).
inline Bytes EmrRectangle(int32_t l, int32_t t, int32_t r, int32_t b) {
    return Words32({static_cast<uint32_t>(l), static_cast<uint32_t>(t), static_cast<uint32_t>(r),
                    static_cast<uint32_t>(b)});
}
inline Bytes EmrPolygon(uint32_t count, uint32_t pointsPresent) {
    Bytes body = Words32({0, 0, 10, 10, count});
    for (uint32_t i = 0; i < pointsPresent; ++i) {
        Put32(body, i);
        Put32(body, i * 2);
    }
    return body;
}
inline Bytes EmrCreatePen(uint32_t index) {
    return Words32({index, 0, 1, 0, 0x000000FF});
}
inline Bytes EmrCreateBrush(uint32_t index, uint32_t style = 0, uint32_t hatch = 0) {
    return Words32({index, style, 0x0000FF00, hatch});
}
inline Bytes EmrObject(uint32_t index) {
    return Words32({index});
}

// EMR_STRETCHDIBITS with the bitmap right behind the fixed part, or with
// the given offsets and sizes when they are not 0.
inline Bytes EmrStretchDiBits(const Dib& dib, uint32_t usage = 0, uint32_t cbBitsOverride = 0) {
    const uint32_t offBmi = 80;
    const uint32_t cbBmi = static_cast<uint32_t>(dib.info.size());
    const uint32_t offBits = offBmi + cbBmi;
    const uint32_t cbBits = cbBitsOverride != 0 ? cbBitsOverride : static_cast<uint32_t>(dib.bits.size());
    Bytes body = Words32({0, 0, 10, 10,  // bounds
                          0, 0, 0, 0, 4, 4, offBmi, cbBmi, offBits, cbBits, usage, 0x00CC0020, 4, 4});
    body.insert(body.end(), dib.info.begin(), dib.info.end());
    body.insert(body.end(), dib.bits.begin(), dib.bits.end());
    return body;
}

// EMR_EXTTEXTOUTW of `text` (ASCII), with spacing when `withDx`.
inline Bytes EmrExtTextOutW(const std::string& text, bool withDx, uint32_t charsOverride = 0) {
    const uint32_t chars = charsOverride != 0 ? charsOverride : static_cast<uint32_t>(text.size());
    const uint32_t offString = 76;
    const uint32_t stringBytes = (static_cast<uint32_t>(text.size()) * 2 + 3) / 4 * 4;
    const uint32_t offDx = withDx ? offString + stringBytes : 0;
    Bytes body = Words32({0, 0, 10, 10, 1, 0, 0,  // bounds, graphics mode, scales
                          5, 5, chars, offString, 0, 0, 0, 10, 10, offDx});
    for (char c : text) Put16(body, static_cast<uint8_t>(c));
    while (body.size() % 4 != 0) body.push_back(0);
    if (withDx)
        for (size_t i = 0; i < text.size(); ++i) Put32(body, 6);
    return body;
}

// ---- Windows metafiles --------------------------------------------------------

class WmfBuilder {
public:
    explicit WmfBuilder(uint32_t objects = 4) : objects_(objects) {}

    WmfBuilder& Record(uint32_t function, std::initializer_list<uint32_t> params) {
        Bytes body;
        for (uint32_t p : params) Put16(body, p);
        return RecordBytes(function, body);
    }
    // Parameters given as bytes, padded to whole words.
    WmfBuilder& RecordBytes(uint32_t function, Bytes body) {
        if (body.size() % 2 != 0) body.push_back(0);
        Bytes record;
        Put32(record, static_cast<uint32_t>(3 + body.size() / 2));
        Put16(record, function);
        record.insert(record.end(), body.begin(), body.end());
        records_.push_back(record);
        return *this;
    }
    WmfBuilder& Raw(const Bytes& record) {
        records_.push_back(record);
        return *this;
    }

    Bytes Finish(bool withEnd = true) const {
        Bytes out;
        Put16(out, 1);  // memory metafile
        Put16(out, 9);  // header words
        Put16(out, 0x0300);
        Put32(out, 0);  // size in words, filled in
        Put16(out, objects_);
        Put32(out, 0);  // largest record, filled in
        Put16(out, 0);
        uint32_t largest = 3;
        for (const Bytes& record : records_) {
            out.insert(out.end(), record.begin(), record.end());
            if (record.size() >= 4) largest = std::max(largest, Get32(record, 0));
        }
        if (withEnd) {
            Put32(out, 3);
            Put16(out, 0);
        }
        Set32(out, 6, static_cast<uint32_t>(out.size() / 2));
        Set32(out, 12, largest);
        return out;
    }

private:
    uint32_t objects_;
    std::vector<Bytes> records_;
};

// A placeable header in front of a Windows metafile, with its checksum.
inline Bytes Placeable(const Bytes& wmf, int16_t left = 0, int16_t top = 0, int16_t right = 1000,
                       int16_t bottom = 500, uint16_t inch = 1440) {
    Bytes out;
    Put32(out, 0x9AC6CDD7);
    Put16(out, 0);
    Put16(out, static_cast<uint16_t>(left));
    Put16(out, static_cast<uint16_t>(top));
    Put16(out, static_cast<uint16_t>(right));
    Put16(out, static_cast<uint16_t>(bottom));
    Put16(out, inch);
    Put32(out, 0);
    uint32_t checksum = 0;
    for (size_t i = 0; i < 20; i += 2) checksum ^= Get16(out, i);
    Put16(out, checksum);
    out.insert(out.end(), wmf.begin(), wmf.end());
    return out;
}

// A Windows metafile with a pen, a brush, shapes, text and a bitmap.
inline Bytes SampleWmf() {
    const Dib dib = MakeDib(4, 3, 24);
    Bytes stretch;
    for (uint32_t p : {0x0020u, 0x00CCu, 3u, 4u, 0u, 0u, 30u, 40u, 5u, 5u}) Put16(stretch, p);
    stretch.insert(stretch.end(), dib.info.begin(), dib.info.end());
    stretch.insert(stretch.end(), dib.bits.begin(), dib.bits.end());
    Bytes text;
    Put16(text, 5);
    for (char c : std::string("Hello")) text.push_back(static_cast<uint8_t>(c));
    text.push_back(0);
    Put16(text, 20);
    Put16(text, 10);
    WmfBuilder wmf(3);
    wmf.Record(0x020C, {100, 200})                 // SETWINDOWEXT
        .Record(0x020B, {0, 0})                    // SETWINDOWORG
        .Record(0x02FA, {0, 1, 0, 0x00FF, 0})      // CREATEPENINDIRECT -> 0
        .Record(0x02FC, {0, 0xFF00, 0, 0})         // CREATEBRUSHINDIRECT -> 1
        .Record(0x012D, {0})                       // SELECTOBJECT
        .Record(0x012D, {1})                       // SELECTOBJECT
        .Record(0x041B, {90, 190, 10, 10})         // RECTANGLE
        .Record(0x0324, {3, 0, 0, 50, 0, 25, 40})  // POLYGON
        .Record(0x0418, {80, 80, 20, 20})          // ELLIPSE
        .RecordBytes(0x0521, text)                 // TEXTOUT
        .RecordBytes(0x0B41, stretch)              // DIBSTRETCHBLT
        .Record(0x01F0, {0})                       // DELETEOBJECT
        .Record(0x01F0, {1});                      // DELETEOBJECT
    return wmf.Finish();
}

// An enhanced metafile with objects, shapes, text and a bitmap.
inline Bytes SampleEmf() {
    EmfBuilder emf(3);
    emf.Record(38, EmrCreatePen(1))
        .Record(39, EmrCreateBrush(2))
        .Record(37, EmrObject(1))
        .Record(37, EmrObject(2))
        .Record(43, EmrRectangle(10, 10, 90, 90))
        .Record(3, EmrPolygon(3, 3))
        .Record(84, EmrExtTextOutW("Hi", true))
        .Record(81, EmrStretchDiBits(MakeDib(4, 3, 8)))
        .Record(70, Concat({Words32({8}), Bytes(8, 0x41)}))  // GDICOMMENT
        .Record(37, EmrObject(0x80000000u | 5))              // SELECTOBJECT of a stock object
        .Record(40, EmrObject(1))
        .Record(40, EmrObject(2));
    return emf.Finish();
}

}  // namespace metafilebuilder
