// Tiled TIFF files, a tile at a time, and TIFF files as whole pictures.
#pragma once

#include <memory>

#include "picture.h"

struct tiff;

namespace zetpic {

class TiffFile {
  public:
    ~TiffFile();
    TiffFile(const TiffFile&) = delete;
    TiffFile& operator=(const TiffFile&) = delete;

    // *file stays null, without a failure, when this is no TIFF file in tiles.
    static Failure openTiles(const std::string& path, std::unique_ptr<TiffFile>* file);
    // The file has another name until it is finished, so that it may take the place of one that is still read.
    static Failure create(const std::string& path, const ZetImage& form, std::int32_t tileWidth,
                          std::int32_t tileHeight, std::unique_ptr<TiffFile>* file);

    // The picture's record, without pixels.
    const ZetImage& form() const { return form_; }
    std::int32_t tileWidth() const { return tileWidth_; }
    std::int32_t tileHeight() const { return tileHeight_; }

    // Between the file and whole tiles in memory, `step` bytes from row to row. Tiles never written read as 0.
    bool readTile(std::int32_t column, std::int32_t row, std::uint8_t* pixels, std::ptrdiff_t step);
    bool writeTile(std::int32_t column, std::int32_t row, const std::uint8_t* pixels, std::ptrdiff_t step);

    // Gives a made file the tiles that nothing was written to, and its name.
    Failure finish();
    bool failed() const { return failed_; }

  private:
    TiffFile() = default;
    std::size_t indexOf(std::int32_t column, std::int32_t row) const;
    void takeTileSize();

    tiff* file_ = nullptr;
    std::string path_, partPath_;
    ZetImage form_{};
    std::int32_t tileWidth_ = 0, tileHeight_ = 0, tilesAcross_ = 0, tilesDown_ = 0;
    bool invert_ = false, failed_ = false;
    std::vector<std::uint8_t> tile_;
    std::vector<bool> written_;  // of a made file
};

Failure readTiff(const std::string& path, Picture* picture);
Failure writeTiff(const std::string& path, const ZetImage& image);

}  // namespace zetpic
