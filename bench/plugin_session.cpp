// Sessions are built on demand and kept until a session of another host kind is
// entered: building one paints twelve million pixels through the host.
#include "bench/plugin_session.h"

#include "bench/heap_counter.h"
#include "bench/test_card.h"
#include "simhost/built_plugin.h"

namespace bench {

namespace {

std::unique_ptr<PluginSession> gActive;

simhost::HostConfig BenchHostConfig(simhost::HostKind kind) {
    simhost::HostConfig config;
    config.kind = kind;
    // The tests pad world rows to catch stride errors; a real 32-bit world's
    // rows need no padding, and padding would only inflate the memory counts.
    config.rowPadding = 0;
    return config;
}

REALpicture MakeCard(simhost::SimulatedHost& host, simhost::Storage storage) {
    REALpicture card = host.MakePicture(storage, test_card::kWidth, test_card::kHeight);
    if (card != nullptr) test_card::Paint(host, card);
    return card;
}

template <typename Function>
Function Resolve(const char* name) {
    return reinterpret_cast<Function>(simhost::SimulatedHost::Resolver()(name));
}

}  // namespace

PluginSession& PluginSession::Enter(const HostUnderTest& kind) {
    if (gActive == nullptr || gActive->kind_.kind != kind.kind) {
        gActive.reset();
        gActive.reset(new PluginSession(kind));
    }
    return *gActive;
}

void PluginSession::EndActive() { gActive.reset(); }

PluginSession::PluginSession(const HostUnderTest& kind)
    : kind_(kind), host_(BenchHostConfig(kind.kind)), plugin_(host_, simhost::DefaultPluginPath()) {
    card_ = MakeCard(host_, kind.storage);
}

PluginSession::~PluginSession() {
    if (maskedCard_ != nullptr) host_.Release(maskedCard_);
    if (card_ != nullptr) host_.Release(card_);
}

REALpicture PluginSession::maskedCard() {
    if (maskedCard_ == nullptr) {
        maskedCard_ = MakeCard(host_, kind_.storage);
        REALpicture mask = MakeCard(host_, kind_.storage);
        if (maskedCard_ != nullptr && mask != nullptr) host_.SetMask(maskedCard_, mask);
        if (mask != nullptr) host_.Release(mask);
    }
    return maskedCard_;
}

REALproc PluginSession::Method(const simhost::PictureMethod& method) const {
    const simhost::RegisteredMethod* registered = plugin_.Find(method);
    return registered != nullptr ? registered->function : nullptr;
}

REALpicture PluginSession::HostCopyOfCard() {
    using GraphicsOf = REALobject (*)(REALpicture);
    using LoadObjectMethod = void* (*)(REALobject, const char*);
    using DrawPicture = void (*)(REALobject, REALpicture, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t,
                                 int32_t, int32_t);
    const auto newPicture = Resolve<REALpicture (*)(int32_t, int32_t, int32_t)>("newPicture");
    const auto graphicsOf = Resolve<GraphicsOf>("pluginPictureGraphicsGetter");
    const auto loadObjectMethod = Resolve<LoadObjectMethod>("REALLoadObjectMethod");
    if (newPicture == nullptr || graphicsOf == nullptr || loadObjectMethod == nullptr) return nullptr;

    const int32_t w = test_card::kWidth;
    const int32_t h = test_card::kHeight;
    REALpicture copy = newPicture(w, h, 32);
    if (copy == nullptr) return nullptr;
    REALobject graphics = graphicsOf(copy);
    const auto draw = graphics != nullptr ? reinterpret_cast<DrawPicture>(loadObjectMethod(graphics, simhost::kDrawPictureDeclaration))
                                          : nullptr;
    if (draw != nullptr) draw(graphics, card_, 0, 0, w, h, 0, 0, w, h);
    if (graphics != nullptr) host_.Release(graphics);
    if (draw == nullptr) {
        host_.Release(copy);
        return nullptr;
    }
    return copy;
}

int64_t PluginSession::HostPictureBytes(PictureSize size) {
    const auto key = std::make_pair(size.width, size.height);
    if (const auto known = pictureBytes_.find(key); known != pictureBytes_.end()) return known->second;
    const auto newPicture = Resolve<REALpicture (*)(int32_t, int32_t, int32_t)>("newPicture");
    if (newPicture == nullptr) return 0;
    const int64_t before = heap_counter::LiveBytes();
    heap_counter::ResetPeak();
    REALpicture picture = newPicture(size.width, size.height, 32);
    if (picture != nullptr) host_.Release(picture);
    const int64_t bytes = heap_counter::PeakBytes() - before;
    pictureBytes_.emplace(key, bytes);
    return bytes;
}

}  // namespace bench
