// The lock-step walk.
//   lockstep.1 a source that is the destination's record takes no part of its own: the routine gets the destination's view,
//              and the tile is asked for once, for writing
//   lockstep.2 requests go source by source, then the destination, at the start of a band and at each step to the right
//   lockstep.3 a band is never higher than the lowest tile that it meets, and starts again at the first tile column
//   lockstep.4 an empty common area asks for no tile
#include "pixel/lockstep.h"

#include <algorithm>
#include <limits>

#include "core/check.h"
#include "core/region.h"

namespace zetpxl {

namespace {

// Where the walk stands in a tiled image.
struct ZetTileCursor {
    bool tiled;
    std::int32_t firstLeft;
    std::int32_t tileLeft;
    std::int64_t firstRight;
    std::int64_t tileRight;
    std::int32_t tileTop;
    std::int64_t tileBottom;
    std::int32_t firstCol;
    std::int32_t col;
    std::int32_t row;
    std::int32_t tileHeight;
    std::int32_t tileWidth;
};

struct Walker {
    ZetImage* image;  // null for an alias
    const char* words;
    std::int32_t mode;
    ZetRoiRect rect;
    ZetTileCursor cursor;
    std::int32_t x;
    std::int32_t y;
    TileView view;
};

constexpr std::size_t kDst = 2;

struct Walk {
    std::array<Walker, 3> walkers;  // sources, destination
    TileView maskView;
    ZetRoiRect maskRect;
    bool masked;
    std::int32_t height;
    std::int32_t width;
};

std::int32_t viewSize(const ZetImage& view) {
    const std::int64_t planes = view.dataOrder == 1 ? view.nChannels : 1;
    constexpr std::int64_t limit = std::numeric_limits<std::int32_t>::max();
    const std::int64_t plane = std::min(std::int64_t{view.widthStep} * view.height, limit);
    return static_cast<std::int32_t>(std::min(plane * planes, limit));
}

void setTileView(Walker* w) {
    ZetImage& view = w->view.image;
    const ZetTileInfo& tiles = *w->image->tileInfo;
    view.width = tiles.width;
    view.height = tiles.height;
    view.widthStep = ownRowBytes(view.dataOrder, view.depth, view.align, view.nChannels, tiles.width);
    view.imageSize = viewSize(view);
}

void setCursor(Walker* w) {
    ZetTileCursor& c = w->cursor;
    c = {};
    c.tiled = w->image->tileInfo != nullptr;
    if (!c.tiled) return;
    c.tileWidth = w->image->tileInfo->width;
    c.tileHeight = w->image->tileInfo->height;
    c.firstCol = c.col = w->rect.xOffset / c.tileWidth;
    c.row = w->rect.yOffset / c.tileHeight;
    c.firstLeft = c.tileLeft = c.firstCol * c.tileWidth;
    c.firstRight = c.tileRight = std::int64_t{c.firstLeft} + c.tileWidth;
    c.tileTop = c.row * c.tileHeight;
    c.tileBottom = std::int64_t{c.tileTop} + c.tileHeight;
}

void startWalker(Walker* w, ZetImage* image, std::int32_t mode, const char* words) {
    w->image = image;
    w->mode = mode;
    w->words = words;
    makeView(&w->view, image);
    ownRoiRect(image, &w->rect);
}

void setEnds(Walker* w, std::int32_t height, std::int32_t width) {
    w->rect.xEnd = w->rect.xOffset + width;
    w->rect.yEnd = w->rect.yOffset + height;
    w->y = w->rect.yOffset;
    if (w->image->tileInfo) setTileView(w);
    setCursor(w);
}

void startWalk(Walk* walk, const LockStepImages& images, const LockStepWords& words) {
    startWalker(&walk->walkers[kDst], images.dst, ZET_TILE_WRITE, words.dst);
    walk->height = walk->walkers[kDst].rect.height;
    walk->width = walk->walkers[kDst].rect.width;
    for (std::size_t s = 0; s < kDst; ++s) {
        Walker& w = walk->walkers[s];
        w.image = nullptr;
        if (static_cast<std::int32_t>(s) >= images.nSources || images.sources[s] == images.dst) continue;
        startWalker(&w, images.sources[s], ZET_TILE_READ, words.sources[s]);
        walk->height = std::min(walk->height, w.rect.height);
        walk->width = std::min(walk->width, w.rect.width);
    }
    walk->masked = images.mask != nullptr;
    if (!walk->masked) return;
    makeMaskView(&walk->maskView, images.mask);
    ownRoiRect(images.mask, &walk->maskRect);
    walk->height = std::min(walk->height, walk->maskRect.height);
    walk->width = std::min(walk->width, walk->maskRect.width);
}

bool fetch(Walker* w, const Operation& op) {
    w->view.image.imageData = fetchTile(w->image, w->cursor.col, w->cursor.row, w->mode);
    if (w->view.image.imageData) return true;
    report(op, ZET_StatusBadArgument, w->words);
    return false;
}

void moveDown(ZetTileCursor* c) {
    ++c->row;
    c->tileTop += c->tileHeight;
    c->tileBottom += c->tileHeight;
}

void moveRight(ZetTileCursor* c) {
    ++c->col;
    c->tileLeft += c->tileWidth;
    c->tileRight += c->tileWidth;
}

// Back to the first tile column and the region's left edge, and on to the tile row of the current y. False when the tile
// cannot be had.
bool startBand(Walker* w, const Operation& op) {
    ZetTileCursor& c = w->cursor;
    w->x = w->rect.xOffset;
    w->view.roi.yOffset = w->y;
    w->view.roi.height = w->rect.yEnd - w->y;
    if (!c.tiled) return true;
    if (w->y >= c.tileBottom) moveDown(&c);
    c.col = c.firstCol;
    c.tileLeft = c.firstLeft;
    c.tileRight = c.firstRight;
    w->view.roi.yOffset = w->y - c.tileTop;
    w->view.roi.height = static_cast<std::int32_t>(std::min<std::int64_t>(c.tileBottom, w->rect.yEnd) - w->y);
    return fetch(w, op);
}

bool startRectangle(Walker* w, const Operation& op) {
    ZetTileCursor& c = w->cursor;
    w->view.roi.xOffset = w->x;
    w->view.roi.width = w->rect.xEnd - w->x;
    if (!c.tiled) return true;
    if (w->x >= c.tileRight) {
        releaseTile(w->image, c.col, c.row);
        moveRight(&c);
        if (!fetch(w, op)) return false;
    }
    w->view.roi.xOffset = w->x - c.tileLeft;
    w->view.roi.width = static_cast<std::int32_t>(std::min<std::int64_t>(c.tileRight, w->rect.xEnd) - w->x);
    return true;
}

void callRoutine(const Walk& walk, const LockStepImages& images, const LockStepCall& call) {
    LockStepRectangle rectangle{};
    rectangle.dst = &walk.walkers[kDst].view.image;
    for (std::size_t s = 0; s < static_cast<std::size_t>(images.nSources); ++s)
        rectangle.sources[s] = walk.walkers[s].image ? &walk.walkers[s].view.image : rectangle.dst;
    rectangle.mask = walk.masked ? &walk.maskView.image : nullptr;
    call.routine(rectangle, call.argument);
}

bool walkBand(Walk* walk, const LockStepImages& images, const LockStepCall& call) {
    Walker& dst = walk->walkers[kDst];
    while (dst.x < dst.rect.xEnd) {
        const std::int32_t done = dst.x - dst.rect.xOffset;
        walk->maskView.roi.xOffset = walk->maskRect.xOffset + done;
        std::int32_t width = walk->width - done;
        for (Walker& w : walk->walkers) {
            if (!w.image) continue;
            if (!startRectangle(&w, call.op)) return false;
            width = std::min(width, w.view.roi.width);
        }
        for (Walker& w : walk->walkers) w.view.roi.width = width;
        walk->maskView.roi.width = width;
        callRoutine(*walk, images, call);
        for (Walker& w : walk->walkers) w.x += width;
    }
    return true;
}

}  // namespace

void walkLockStep(const LockStepImages& images, const LockStepCall& call) {
    Walk walk{};
    startWalk(&walk, images, call.words);
    if (walk.height < 1 || walk.width < 1) return;
    for (Walker& w : walk.walkers)
        if (w.image) setEnds(&w, walk.height, walk.width);
    const Walker& dst = walk.walkers[kDst];
    while (dst.y < dst.rect.yEnd) {
        const std::int32_t done = dst.y - dst.rect.yOffset;
        walk.maskView.roi.yOffset = walk.maskRect.yOffset + done;
        std::int32_t height = walk.height - done;
        for (Walker& w : walk.walkers) {
            if (!w.image) continue;
            if (!startBand(&w, call.op)) return;
            height = std::min(height, w.view.roi.height);
        }
        for (Walker& w : walk.walkers) w.view.roi.height = height;
        walk.maskView.roi.height = height;
        if (!walkBand(&walk, images, call)) return;
        for (Walker& w : walk.walkers) {
            if (w.image && w.cursor.tiled) releaseTile(w.image, w.cursor.col, w.cursor.row);
            w.y += height;
        }
    }
}

}  // namespace zetpxl
