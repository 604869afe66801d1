#include "canvas.h"

#include <algorithm>
#include <cstring>

#include "transform.h"

namespace zetpic {
namespace {

// Bits from pixel to pixel in a row.
std::int64_t pixelBits(const ZetImage& image) {
    const std::int64_t bits = image.depth & ~ZET_DEPTH_SIGN;
    return image.dataOrder == 0 ? bits * image.nChannels : bits;
}

std::int32_t planeCount(const ZetImage& image) { return image.dataOrder == 0 ? 1 : image.nChannels; }

std::int64_t tileStep(const ZetImage& image, std::int32_t tileWidth) {
    const std::int64_t unit = 8 * std::int64_t{image.align};
    return (tileWidth * pixelBits(image) + unit - 1) / unit * unit / 8;
}

}  // namespace

Failure Canvas::openMask(const Options& options) {
    Failure failure = readUpright(options.mask, &mask_);
    if (!failure.empty()) return failure;
    if (mask_.image->depth != ZET_DEPTH_1U) return options.mask + ": a mask must be black and white with 1 bit a pixel";
    // A mask is drawn over the whole picture, whatever part of it is worked on.
    if (options.region) {
        maskRegion_ = *options.region;
        maskRegion_.coi = 0;
        mask_.image->roi = &maskRegion_;
    }
    record_.maskImage = mask_.image.get();
    return "";
}

Failure Canvas::open(const ZetImage& image, const Options& options) {
    plain_ = image;
    record_ = plain_;
    record_.imageDataBase = nullptr;
    if (options.region) {
        region_ = *options.region;
        record_.roi = &region_;
    }
    if (!options.mask.empty()) {
        Failure failure = openMask(options);
        if (!failure.empty()) return failure;
    }
    const Border border = options.border.value_or(Border{ZET_BORDER_REPLICATE, 0});
    zetSetBorderMode(&record_, border.mode, 15, border.constant);
    if (options.tileWidth > 0) {
        tileInfo_ = {serve, this, nullptr, options.tileWidth, options.tileHeight};
        record_.tileInfo = &tileInfo_;
        record_.imageData = nullptr;
    }
    return "";
}

Failure Canvas::open(const Sheet& sheet, const Options& options) {
    file_ = sheet.file.get();
    if (!file_) return open(*sheet.picture.image, options);
    Options tiled = options;
    tiled.tileWidth = file_->tileWidth();
    tiled.tileHeight = file_->tileHeight();
    const ZetImage& form = file_->form();
    const Failure failure = open(form, tiled);
    // Row step and size of a picture that is in no memory, as the library works them out.
    const Image sized(zetCreateImageHeader(form.nChannels, form.alphaChannel, form.depth, form.colorModel,
                                           form.channelSeq, 0, 0, form.align, form.width, form.height, nullptr, nullptr,
                                           nullptr, &tileInfo_));
    if (!sized) return "a record cannot be had";
    record_.widthStep = sized->widthStep;
    record_.imageSize = sized->imageSize;
    return failure;
}

void Canvas::showProgress() {
    if (!record_.tileInfo) return;
    const std::int64_t across = (record_.width - 1) / tileInfo_.width + 1;
    const std::int64_t down = (record_.height - 1) / tileInfo_.height + 1;
    progress_.emplace(across * down);
}

void Canvas::serve(ZetImage* image, std::int32_t column, std::int32_t row, std::int32_t mode) {
    auto* const canvas = static_cast<Canvas*>(image->tileInfo->id);
    if (mode == ZET_TILE_RELEASE) return canvas->release(column, row);
    canvas->fetch(column, row, mode);
}

Canvas::Tile* Canvas::find(std::int32_t column, std::int32_t row) {
    const auto found = std::find_if(tiles_.begin(), tiles_.end(),
                                    [&](const Tile& tile) { return tile.column == column && tile.row == row; });
    return found == tiles_.end() ? nullptr : &*found;
}

void Canvas::fetch(std::int32_t column, std::int32_t row, std::int32_t mode) {
    Tile* tile = find(column, row);
    tileInfo_.tileData = nullptr;
    if (progress_ && mode == ZET_TILE_WRITE) progress_->step();
    if (!tile) {
        const std::int64_t bytes = tileStep(plain_, tileInfo_.width) * tileInfo_.height * planeCount(plain_);
        tiles_.push_back({column, row, 0, false, std::vector<std::uint8_t>(static_cast<std::size_t>(bytes))});
        tile = &tiles_.back();
        if (!move(tile, false)) return tiles_.pop_back();
    }
    tile->holders += 1;
    tile->written |= mode == ZET_TILE_WRITE;
    tileInfo_.tileData = tile->pixels.data();
}

void Canvas::release(std::int32_t column, std::int32_t row) {
    Tile* const tile = find(column, row);
    if (!tile || --tile->holders > 0) return;
    if (tile->written) move(tile, true);
    tiles_.erase(tiles_.begin() + (tile - tiles_.data()));
}

bool Canvas::moveFile(Tile* tile, bool toPicture) {
    const std::int64_t step = tileStep(plain_, tileInfo_.width);
    if (toPicture) return file_->writeTile(tile->column, tile->row, tile->pixels.data(), step);
    return file_->readTile(tile->column, tile->row, tile->pixels.data(), step);
}

bool Canvas::move(Tile* tile, bool toPicture) {
    if (file_) return moveFile(tile, toPicture);
    const std::int64_t left = std::int64_t{tile->column} * tileInfo_.width;
    const std::int64_t top = std::int64_t{tile->row} * tileInfo_.height;
    const std::int64_t columns = std::min<std::int64_t>(tileInfo_.width, plain_.width - left);
    const std::int64_t rows = std::min<std::int64_t>(tileInfo_.height, plain_.height - top);
    const auto bytes = static_cast<std::size_t>((columns * pixelBits(plain_) + 7) / 8);
    const std::int64_t step = tileStep(plain_, tileInfo_.width);
    for (std::int64_t plane = 0; plane < planeCount(plain_); ++plane) {
        for (std::int64_t y = 0; y < rows; ++y) {
            std::uint8_t* const inTile = tile->pixels.data() + (plane * tileInfo_.height + y) * step;
            std::uint8_t* const inPicture = static_cast<std::uint8_t*>(plain_.imageData) +
                                            (plane * plain_.height + top + y) * plain_.widthStep +
                                            left * pixelBits(plain_) / 8;
            std::memcpy(toPicture ? inPicture : inTile, toPicture ? inTile : inPicture, bytes);
        }
    }
    return true;
}

}  // namespace zetpic
