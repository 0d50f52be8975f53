// The simulated host's face to tests and tools: pictures made, read and written
// the way a Xojo program would, and the ledger.
#include "simhost/simulated_host.h"

#include "simhost/host_state.h"

namespace simhost {

using internal::HostAccess;
using internal::HostState;

namespace {

// The host held for the whole of one call of a test or tool.
HostAccess Hold(const std::unique_ptr<HostState>& state) { return HostAccess(state.get()); }

}  // namespace

SimulatedHost::SimulatedHost(HostConfig config) : state_(std::make_unique<HostState>(std::move(config), this)) {}

SimulatedHost::~SimulatedHost() = default;

const HostConfig& SimulatedHost::config() const { return state_->config; }

SimulatedHost& SimulatedHost::Current() {
    return *HostState::Active()->owner;
}

const Registration& SimulatedHost::registration() const { return state_->registration; }

int SimulatedHost::Lookups(const std::string& name) const {
    const HostAccess state = Hold(state_);
    auto it = state->lookups.find(name);
    return it == state->lookups.end() ? 0 : it->second;
}

int SimulatedHost::Calls(const std::string& name) const {
    const HostAccess state = Hold(state_);
    auto it = state->calls.find(name);
    return it == state->calls.end() ? 0 : it->second;
}

REALpicture SimulatedHost::MakePicture(Storage storage, int32_t width, int32_t height) {
    const HostAccess state = Hold(state_);
    const uintptr_t token = state->NewPicture(storage, width, height, Rgba{0, 0, 0, 0});
    state->MarkProgramReference(token);
    return HostState::PictureHandle(token);
}

void SimulatedHost::Release(REALobject object) {
    const HostAccess state = Hold(state_);
    if (state->Find(object, "the program's release") != nullptr) state->ReleaseByProgram(HostState::TokenOf(object));
}

void SimulatedHost::SetPixel(REALpicture picture, int32_t x, int32_t y, Rgba pixel) {
    const HostAccess state = Hold(state_);
    if (internal::PictureStore* store = state->PixelsOf(picture, "SetPixel"); store && store->Contains(x, y))
        store->Write(x, y, pixel);
}

Rgba SimulatedHost::GetPixel(REALpicture picture, int32_t x, int32_t y) const {
    const HostAccess state = Hold(state_);
    const internal::HostObject* object = state->Peek(picture);
    if (object == nullptr || !object->store || !object->store->Contains(x, y)) return {};
    return object->store->Read(x, y);
}

void SimulatedHost::SetRow(REALpicture picture, int32_t y, const Rgba* pixels) {
    const HostAccess state = Hold(state_);
    if (internal::PictureStore* store = state->PixelsOf(picture, "SetRow"); store && store->Contains(0, y))
        store->WriteRow(y, pixels);
}

void SimulatedHost::GetRow(REALpicture picture, int32_t y, Rgba* pixels) const {
    const HostAccess state = Hold(state_);
    const internal::HostObject* object = state->Peek(picture);
    if (object != nullptr && object->store && object->store->Contains(0, y)) object->store->ReadRow(y, pixels);
}

std::vector<uint8_t> SimulatedHost::RawPixel(REALpicture picture, int32_t x, int32_t y) const {
    const HostAccess state = Hold(state_);
    const internal::HostObject* object = state->Peek(picture);
    if (object == nullptr || !object->store || !object->store->Contains(x, y)) return {};
    return object->store->RawBytes(x, y);
}

void SimulatedHost::SetRawPixel(REALpicture picture, int32_t x, int32_t y, const std::vector<uint8_t>& bytes) {
    const HostAccess state = Hold(state_);
    if (internal::PictureStore* store = state->PixelsOf(picture, "SetRawPixel"); store && store->Contains(x, y))
        store->SetRawBytes(x, y, bytes);
}

std::vector<uint8_t> SimulatedHost::StoredBytes(REALpicture picture) const {
    const HostAccess state = Hold(state_);
    const internal::HostObject* object = state->Peek(picture);
    return object != nullptr && object->store ? object->store->StoredBytes() : std::vector<uint8_t>{};
}

size_t SimulatedHost::StoredBytesHash(REALpicture picture) const {
    const HostAccess state = Hold(state_);
    const internal::HostObject* object = state->Peek(picture);
    return object != nullptr && object->store ? object->store->StoredBytesHash() : 0;
}

Storage SimulatedHost::StorageOf(REALpicture picture) const {
    const HostAccess state = Hold(state_);
    const internal::HostObject* object = state->Peek(picture);
    return object != nullptr && object->store ? object->store->storage() : Storage::VectorOnly;
}

int32_t SimulatedHost::Width(REALpicture picture) const {
    const HostAccess state = Hold(state_);
    const internal::HostObject* object = state->Peek(picture);
    return object != nullptr && object->store ? object->store->width() : 0;
}

int32_t SimulatedHost::Height(REALpicture picture) const {
    const HostAccess state = Hold(state_);
    const internal::HostObject* object = state->Peek(picture);
    return object != nullptr && object->store ? object->store->height() : 0;
}

int SimulatedHost::References(REALobject object) const {
    const HostAccess state = Hold(state_);
    const internal::HostObject* found = state->Peek(object);
    return found != nullptr ? found->references : 0;
}

bool SimulatedHost::IsAlive(REALobject object) const {
    const HostAccess state = Hold(state_);
    return state->Peek(object) != nullptr;
}

REALpicture SimulatedHost::MaskOf(REALpicture picture) const {
    const HostAccess state = Hold(state_);
    const internal::HostObject* object = state->Peek(picture);
    return object != nullptr && object->mask != 0 ? HostState::PictureHandle(object->mask) : nullptr;
}

void SimulatedHost::SetMask(REALpicture picture, REALpicture mask) {
    const HostAccess state = Hold(state_);
    state->SetMask(picture, mask);
}

int SimulatedHost::CacheClears(REALpicture picture) const {
    const HostAccess state = Hold(state_);
    const internal::HostObject* object = state->Peek(picture);
    return object != nullptr ? object->cacheClears : 0;
}

void SimulatedHost::MalformRecord(REALpicture picture, RecordDefect defect) {
    const HostAccess state = Hold(state_);
    if (internal::PictureStore* store = state->PixelsOf(picture, "MalformRecord")) store->Malform(defect);
}

std::vector<std::string> SimulatedHost::LedgerProblems(const std::vector<REALpicture>& returned) const {
    const HostAccess state = Hold(state_);
    return state->LedgerProblems(returned);
}

}  // namespace simhost
