// A picture as an operation sees it: with the region, the mask, the borders and the tiles of the command line.
#pragma once

#include <optional>
#include <vector>

#include "command.h"
#include "picture.h"
#include "progress.h"
#include "tiff.h"

namespace zetpic {

// Where the pixels are: in memory, or in a file in tiles.
struct Sheet {
    Picture picture;
    std::unique_ptr<TiffFile> file;
    const ZetImage& form() const { return file ? file->form() : *picture.image; }
};

class Canvas {
  public:
    Canvas() = default;
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    // The image stays the owner of its pixels and must outlive the canvas.
    Failure open(const ZetImage& image, const Options& options);
    // A file has tiles of its own size, whatever the options say.
    Failure open(const Sheet& sheet, const Options& options);
    ZetImage* image() { return &record_; }

    // Tells on a terminal how many of the tiles have been asked for, to be written.
    void showProgress();
    void hideProgress() { progress_.reset(); }

  private:
    // A tile in the hands of the library, as often as it asked for it.
    struct Tile {
        std::int32_t column, row;
        std::int32_t holders;
        bool written;
        std::vector<std::uint8_t> pixels;
    };

    ZetImage record_{};
    ZetImage plain_{};
    ZetROI region_{};
    ZetTileInfo tileInfo_{};
    Picture mask_;
    ZetROI maskRegion_{};
    std::vector<Tile> tiles_;
    TiffFile* file_ = nullptr;
    std::optional<Progress> progress_;

    Failure openMask(const Options& options);
    static void serve(ZetImage* image, std::int32_t column, std::int32_t row, std::int32_t mode);
    Tile* find(std::int32_t column, std::int32_t row);
    void fetch(std::int32_t column, std::int32_t row, std::int32_t mode);
    void release(std::int32_t column, std::int32_t row);
    bool move(Tile* tile, bool toPicture);
    bool moveFile(Tile* tile, bool toPicture);
};

}  // namespace zetpic
