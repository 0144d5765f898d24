#include "PictureFiles.h"

#include <zlib.h>

#include <cstdio>
#include <fstream>

#ifdef LUMBREL_SAMPLEART_JPEG
#include <jpeglib.h>
#endif

namespace sampleart {

namespace {

void Put16(Bytes& out, uint32_t v) {
    out.push_back(static_cast<uint8_t>(v));
    out.push_back(static_cast<uint8_t>(v >> 8));
}
void Put32(Bytes& out, uint32_t v) {
    Put16(out, v & 0xFFFF);
    Put16(out, v >> 16);
}
void PutBig32(Bytes& out, uint32_t v) {
    out.push_back(static_cast<uint8_t>(v >> 24));
    out.push_back(static_cast<uint8_t>(v >> 16));
    out.push_back(static_cast<uint8_t>(v >> 8));
    out.push_back(static_cast<uint8_t>(v));
}

void PngChunk(Bytes& out, const char type[4], const Bytes& data) {
    PutBig32(out, static_cast<uint32_t>(data.size()));
    const size_t start = out.size();
    out.insert(out.end(), type, type + 4);
    out.insert(out.end(), data.begin(), data.end());
    PutBig32(out,
             static_cast<uint32_t>(crc32(0L, out.data() + start, static_cast<uInt>(out.size() - start))));
}

// GDI's COLORREF: red in the low byte.
uint32_t ColourRef(uint32_t rgb) {
    return ((rgb >> 16) & 0xFF) | (rgb & 0xFF00) | ((rgb & 0xFF) << 16);
}

// One WMF record: size in 16-bit words, function, parameters as words.
void WmfRecord(Bytes& out, uint16_t function, const std::vector<uint16_t>& parameters) {
    Put32(out, static_cast<uint32_t>(3 + parameters.size()));
    Put16(out, function);
    for (const uint16_t word : parameters) Put16(out, word);
}

void EmfRecord(Bytes& out, uint32_t type, const std::vector<uint32_t>& parameters) {
    Put32(out, type);
    Put32(out, static_cast<uint32_t>(8 + 4 * parameters.size()));
    for (const uint32_t value : parameters) Put32(out, value);
}

}  // namespace

Bytes BmpFile(const std::vector<uint8_t>& rgb, int width, int height) {
    const uint32_t rowSize = static_cast<uint32_t>((width * 3 + 3) & ~3);
    const uint32_t pixels = rowSize * static_cast<uint32_t>(height);
    Bytes out = {'B', 'M'};
    Put32(out, 54 + pixels);
    Put32(out, 0);
    Put32(out, 54);
    Put32(out, 40);
    Put32(out, static_cast<uint32_t>(width));
    Put32(out, static_cast<uint32_t>(height));
    Put16(out, 1);
    Put16(out, 24);
    Put32(out, 0);
    Put32(out, pixels);
    Put32(out, 2835);
    Put32(out, 2835);
    Put32(out, 0);
    Put32(out, 0);
    for (int y = height - 1; y >= 0; --y) {
        const uint8_t* row = rgb.data() + static_cast<size_t>(y) * static_cast<size_t>(width) * 3;
        for (int x = 0; x < width; ++x) {
            out.push_back(row[x * 3 + 2]);
            out.push_back(row[x * 3 + 1]);
            out.push_back(row[x * 3]);
        }
        for (uint32_t pad = static_cast<uint32_t>(width * 3); pad < rowSize; ++pad) out.push_back(0);
    }
    return out;
}

Bytes PngFile(const std::vector<uint8_t>& rgb, int width, int height) {
    const size_t row = static_cast<size_t>(width) * 3;
    Bytes raw;
    for (int y = 0; y < height; ++y) {
        raw.push_back(0);  // no filter
        raw.insert(raw.end(), rgb.begin() + static_cast<std::ptrdiff_t>(row * static_cast<size_t>(y)),
                   rgb.begin() + static_cast<std::ptrdiff_t>(row * static_cast<size_t>(y + 1)));
    }
    uLongf packedSize = compressBound(static_cast<uLong>(raw.size()));
    Bytes packed(packedSize);
    if (compress2(packed.data(), &packedSize, raw.data(), static_cast<uLong>(raw.size()), 9) != Z_OK)
        return {};
    packed.resize(packedSize);
    Bytes out = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    Bytes header;
    PutBig32(header, static_cast<uint32_t>(width));
    PutBig32(header, static_cast<uint32_t>(height));
    header.insert(header.end(), {8, 2, 0, 0, 0});
    PngChunk(out, "IHDR", header);
    PngChunk(out, "IDAT", packed);
    PngChunk(out, "IEND", {});
    return out;
}

Bytes TiffFile(const std::vector<uint8_t>& rgb, int width, int height) {
    constexpr uint32_t kEntries = 12;
    const uint32_t ifd = 8;
    const uint32_t extra = ifd + 2 + kEntries * 12 + 4;  // bits per sample, then the resolutions
    const uint32_t pixels = extra + 6 + 16;
    const uint32_t pixelBytes = static_cast<uint32_t>(width) * static_cast<uint32_t>(height) * 3;
    Bytes out = {'I', 'I', 42, 0};
    Put32(out, ifd);
    Put16(out, kEntries);
    auto entry = [&out](uint16_t tag, uint16_t type, uint32_t count, uint32_t value) {
        Put16(out, tag);
        Put16(out, type);
        Put32(out, count);
        if (type == 3 && count == 1) {
            Put16(out, value);
            Put16(out, 0);
        } else {
            Put32(out, value);
        }
    };
    entry(256, 4, 1, static_cast<uint32_t>(width));
    entry(257, 4, 1, static_cast<uint32_t>(height));
    entry(258, 3, 3, extra);  // 8, 8, 8
    entry(259, 3, 1, 1);      // no compression
    entry(262, 3, 1, 2);      // RGB
    entry(273, 4, 1, pixels);
    entry(277, 3, 1, 3);
    entry(278, 4, 1, static_cast<uint32_t>(height));
    entry(279, 4, 1, pixelBytes);
    entry(282, 5, 1, extra + 6);
    entry(283, 5, 1, extra + 14);
    entry(296, 3, 1, 2);  // inches
    Put32(out, 0);        // no next directory
    for (int i = 0; i < 3; ++i) Put16(out, 8);
    for (int i = 0; i < 2; ++i) {
        Put32(out, 96);
        Put32(out, 1);
    }
    out.insert(out.end(), rgb.begin(), rgb.begin() + pixelBytes);
    return out;
}

Bytes JpegFile(const std::vector<uint8_t>& rgb, int width, int height, int quality) {
#ifdef LUMBREL_SAMPLEART_JPEG
    jpeg_compress_struct info = {};
    jpeg_error_mgr errors = {};
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    unsigned char* buffer = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&info, &buffer, &size);
    info.image_width = static_cast<JDIMENSION>(width);
    info.image_height = static_cast<JDIMENSION>(height);
    info.input_components = 3;
    info.in_color_space = JCS_RGB;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, quality, TRUE);
    jpeg_start_compress(&info, TRUE);
    while (info.next_scanline < info.image_height) {
        JSAMPROW row = const_cast<JSAMPROW>(rgb.data() + static_cast<size_t>(info.next_scanline) *
                                                             static_cast<size_t>(width) * 3);
        jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
    Bytes out(buffer, buffer + size);
    jpeg_destroy_compress(&info);
    std::free(buffer);
    return out;
#else
    (void)rgb, (void)width, (void)height, (void)quality;
    return {};
#endif
}

Bytes WmfFile(const std::vector<Shape>& shapes, int width, int height, bool placeable) {
    Bytes records;
    WmfRecord(records, 0x020B, {0, 0});  // SETWINDOWORG y, x
    WmfRecord(records, 0x020C,
              {static_cast<uint16_t>(height), static_cast<uint16_t>(width)});  // SETWINDOWEXT
    size_t longest = 5;
    for (const Shape& shape : shapes) {
        const uint32_t colour = ColourRef(shape.colour);
        // CREATEBRUSHINDIRECT: solid style, colour, no hatch; it takes object slot 0.
        WmfRecord(records, 0x02FC,
                  {0, static_cast<uint16_t>(colour), static_cast<uint16_t>(colour >> 16), 0});
        WmfRecord(records, 0x012D, {0});  // SELECTOBJECT
        const uint16_t function = shape.kind == Shape::kRectangle ? 0x041B : 0x0418;
        WmfRecord(records, function,
                  {static_cast<uint16_t>(shape.bottom), static_cast<uint16_t>(shape.right),
                   static_cast<uint16_t>(shape.top), static_cast<uint16_t>(shape.left)});
        WmfRecord(records, 0x01F0, {0});  // DELETEOBJECT
        longest = 7;
    }
    WmfRecord(records, 0x0000, {});  // EOF

    Bytes out;
    if (placeable) {
        Bytes header;
        Put32(header, 0x9AC6CDD7u);
        Put16(header, 0);
        Put16(header, 0);
        Put16(header, 0);
        Put16(header, static_cast<uint32_t>(width));
        Put16(header, static_cast<uint32_t>(height));
        Put16(header, 96);  // units per inch
        Put32(header, 0);
        uint16_t checksum = 0;
        for (size_t i = 0; i < header.size(); i += 2)
            checksum ^= static_cast<uint16_t>(header[i] | (header[i + 1] << 8));
        Put16(header, checksum);
        out = header;
    }
    Put16(out, 1);       // in memory
    Put16(out, 9);       // header words
    Put16(out, 0x0300);  // version
    Put32(out, static_cast<uint32_t>(9 + records.size() / 2));
    Put16(out, 1);  // objects at a time
    Put32(out, static_cast<uint32_t>(longest));
    Put16(out, 0);
    out.insert(out.end(), records.begin(), records.end());
    return out;
}

Bytes EmfFile(const std::vector<Shape>& shapes, int width, int height) {
    Bytes records;
    uint32_t count = 0;
    for (const Shape& shape : shapes) {
        EmfRecord(records, 39, {1, 0, ColourRef(shape.colour), 0});  // CREATEBRUSHINDIRECT into handle 1
        EmfRecord(records, 37, {1});                                 // SELECTOBJECT
        EmfRecord(records, shape.kind == Shape::kRectangle ? 43 : 42,
                  {static_cast<uint32_t>(shape.left), static_cast<uint32_t>(shape.top),
                   static_cast<uint32_t>(shape.right), static_cast<uint32_t>(shape.bottom)});
        EmfRecord(records, 37, {0x80000000u});  // back to the stock white brush
        EmfRecord(records, 40, {1});            // DELETEOBJECT
        count += 5;
    }
    EmfRecord(records, 14, {0, 16, 20});  // EOF: no palette
    count += 2;                           // the header and the end

    // 96 dpi: a pixel is 0.2646 mm, and the frame is in hundredths of a millimetre.
    const uint32_t frameRight = static_cast<uint32_t>(width * 2646 / 100);
    const uint32_t frameBottom = static_cast<uint32_t>(height * 2646 / 100);
    Bytes out;
    Put32(out, 1);    // EMR_HEADER
    Put32(out, 108);  // with the pixel format and micrometre fields
    for (const uint32_t v : {0u, 0u, static_cast<uint32_t>(width - 1), static_cast<uint32_t>(height - 1)})
        Put32(out, v);
    for (const uint32_t v : {0u, 0u, frameRight, frameBottom}) Put32(out, v);
    Put32(out, 0x464D4520);  // " EMF"
    Put32(out, 0x10000);
    Put32(out, static_cast<uint32_t>(108 + records.size()));
    Put32(out, count);
    Put16(out, 2);  // handles: the reserved one and the brush
    Put16(out, 0);
    Put32(out, 0);  // no description
    Put32(out, 0);
    Put32(out, 0);  // no palette
    Put32(out, 1024);
    Put32(out, 768);
    Put32(out, 271);  // the millimetres of 1024 x 768 pixels at 96 dpi
    Put32(out, 203);
    Put32(out, 0);  // no pixel format, no OpenGL
    Put32(out, 0);
    Put32(out, 0);
    Put32(out, 270933);  // micrometres
    Put32(out, 203200);
    out.insert(out.end(), records.begin(), records.end());
    return out;
}

bool WriteFile(const std::string& path, const Bytes& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return static_cast<bool>(out);
}

}  // namespace sampleart
