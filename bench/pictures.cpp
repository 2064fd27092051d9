#include "pictures.h"

#include "support/pictureunit.h"
#include "support/temporaryfolder.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <random>

namespace
{

constexpr int CellWidth = 20;
constexpr int CellHeight = 34;
constexpr int Letters = 24;
constexpr int Lines = 2;
constexpr int Left = (CanvasWidth - CellWidth * Letters) / 2;
constexpr int Top = 460;
constexpr std::size_t PacketLimit = 2000;
constexpr double StrokeRadius = 1.5;
constexpr double OutlineRadius = 2.8;

struct Point {
    double x;
    double y;
};

double Distance(Point point, Point from, Point to)
{
    const double dx = to.x - from.x;
    const double dy = to.y - from.y;
    const double along = ((point.x - from.x) * dx + (point.y - from.y) * dy) / std::max(dx * dx + dy * dy, 1e-9);
    const double t = std::clamp(along, 0.0, 1.0);
    return std::hypot(point.x - from.x - t * dx, point.y - from.y - t * dy);
}

/** Draws strokes between points of a grid, with an outline. Runs of a colour are about as long as those of text. */
void PutLetter(PictureUnit &unit, int left, int top, std::mt19937 &random)
{
    Point points[4];
    for (Point &point : points)
        point = {4.0 + 5.0 * static_cast<double>(random() % 3), 5.0 + 11.0 * static_cast<double>(random() % 3)};
    for (int row = 0; row < CellHeight; ++row) {
        for (int column = 0; column < CellWidth; ++column) {
            double distance = OutlineRadius + 1;
            for (int n = 0; n < 3; ++n)
                distance = std::min(distance, Distance({double(column), double(row)}, points[n], points[n + 1]));
            const std::size_t place = static_cast<std::size_t>(top + row) * unit.nWidth + left + column;
            unit.listPixels[place] = distance <= StrokeRadius ? 1 : distance <= OutlineRadius ? 2 : 0;
        }
    }
}

std::string ProgramStream(const std::vector<std::uint8_t> &unit)
{
    std::string stream;
    for (std::size_t at = 0; at < unit.size(); at += PacketLimit) {
        const std::size_t bytes = std::min(PacketLimit, unit.size() - at);
        const std::size_t length = bytes + 4;
        const char header[] = {0,      0, 1, '\xBD', static_cast<char>(length >> 8), static_cast<char>(length),
                               '\x81', 0, 0, 0x20};
        stream.append(header, sizeof(header));
        stream.append(unit.begin() + static_cast<std::ptrdiff_t>(at),
                      unit.begin() + static_cast<std::ptrdiff_t>(at + bytes));
    }
    return stream;
}

} // namespace

std::vector<std::uint8_t> TextUnit(int variant)
{
    PictureUnit unit = PictureUnit::Filled(Left, Top, CellWidth * Letters, CellHeight * Lines, 0);
    std::mt19937 random(static_cast<unsigned>(variant));
    for (int line = 0; line < Lines; ++line) {
        for (int letter = 0; letter < Letters; ++letter)
            PutLetter(unit, letter * CellWidth, line * CellHeight, random);
    }
    unit.nContrasts = 0x0FF0;
    return unit.Encode();
}

std::string PictureFile()
{
    static const TemporaryFolder folder;
    static const std::string name = [] {
        std::string index = "size: " + std::to_string(CanvasWidth) + 'x' + std::to_string(CanvasHeight) +
                            "\npalette: 000000, f0f0f0, 303030";
        for (int i = 3; i < 16; ++i)
            index += ", 000000";
        index += "\nid: en, index: 0\n";
        std::string pictures;
        for (int i = 1; i <= PictureCount; ++i) {
            char line[64];
            (void)std::snprintf(line, sizeof(line), "timestamp: 00:%02ld:%02ld:000, filepos: %09zx\n",
                                i * PictureDistance / 60000, i * PictureDistance / 1000 % 60, pictures.size());
            index += line;
            pictures += ProgramStream(TextUnit(i));
        }
        folder.Write("a.sub", pictures);
        return folder.Write("a.idx", index);
    }();
    return name;
}
