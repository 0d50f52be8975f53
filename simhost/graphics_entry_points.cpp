// Graphics objects and the one method a plug-in loads from them, DrawPicture.
//
// The host draws unscaled: the source rectangle lands on the destination
// rectangle pixel for pixel, each pixel converted from the source's storage to
// the destination's; where the source rectangle reaches past the source picture,
// the destination keeps what it had. Masks are not composited. Asking it to scale
// (source and destination rectangles of different sizes) is written down: this
// plug-in never should.
#include <algorithm>
#include <cstring>

#include "simhost/entry_points.h"
#include "simhost/host_state.h"
#include "simhost/simulated_host.h"

namespace simhost {

const char kDrawPictureDeclaration[] =
    "DrawPicture(Image as Picture, x as Integer, y as Integer, w as Integer, h as Integer, "
    "sx as Integer = 0, sy as Integer = 0, sw as Integer = -10000, sh as Integer = -10000)";

}  // namespace simhost

namespace simhost::internal::entry {

namespace {

void DrawPicture(REALobject graphics, REALpicture image, int32_t x, int32_t y, int32_t w, int32_t h, int32_t sx,
                 int32_t sy, int32_t sw, int32_t sh) {
    auto host = HostState::Enter("DrawPicture");
    if (!host) return;
    const HostObject* drawer = host->Find(graphics, "DrawPicture");
    if (drawer == nullptr) return;
    if (drawer->kind != ObjectKind::Graphics) return host->Problem("DrawPicture called on a picture");
    const PictureStore* source = host->PixelsOf(image, "DrawPicture");
    PictureStore* destination = host->PixelsOf(HostState::PictureHandle(drawer->target), "DrawPicture");
    if (source == nullptr || destination == nullptr) return;
    if (sw != w || sh != h) return host->Problem("DrawPicture asked to scale");
    // The offsets into the rectangle where both pictures have pixels.
    const int64_t firstColumn = std::max<int64_t>({0, -int64_t{sx}, -int64_t{x}});
    const int64_t endColumn = std::min<int64_t>({w, int64_t{source->width()} - sx, int64_t{destination->width()} - x});
    const int64_t firstRow = std::max<int64_t>({0, -int64_t{sy}, -int64_t{y}});
    const int64_t endRow = std::min<int64_t>({h, int64_t{source->height()} - sy, int64_t{destination->height()} - y});
    if (firstColumn >= endColumn || firstRow >= endRow) return;
    destination->Draw(*source, int32_t(sx + firstColumn), int32_t(sy + firstRow), int32_t(x + firstColumn),
                      int32_t(y + firstRow), int32_t(endColumn - firstColumn), int32_t(endRow - firstRow));
}

}  // namespace

REALobject pluginPictureGraphicsGetter(REALpicture picture) {
    auto host = HostState::Enter("pluginPictureGraphicsGetter");
    if (!host || host->PixelsOf(picture, "pluginPictureGraphicsGetter") == nullptr) return nullptr;
    if (host->config.graphicsUnavailable) return nullptr;
    return HostState::PictureHandle(host->NewGraphics(HostState::TokenOf(picture)));
}

void* REALLoadObjectMethod(REALobject object, const char* declaration) {
    auto host = HostState::Enter("REALLoadObjectMethod");
    if (!host) return nullptr;
    const HostObject* found = host->Find(object, "REALLoadObjectMethod");
    if (found == nullptr || found->kind != ObjectKind::Graphics || declaration == nullptr) return nullptr;
    if (host->config.drawPictureUnavailable || std::strcmp(declaration, kDrawPictureDeclaration) != 0) return nullptr;
    return reinterpret_cast<void*>(&DrawPicture);
}

}  // namespace simhost::internal::entry
