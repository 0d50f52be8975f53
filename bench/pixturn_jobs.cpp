// Every picture a method returns is released at once, inside the timing, as a
// program that drops it would; the in-place mirrors turn the card back and forth.
#include "bench/pixturn_jobs.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

#include "bench/job.h"
#include "bench/rotation_geometry.h"
#include "bench/tasks.h"
#include "bench/test_card.h"

namespace bench {

namespace {

namespace methods = simhost::methods;

constexpr uint32_t kWhite = 0xFFFFFFFF;
constexpr PictureSize kCard{test_card::kWidth, test_card::kHeight};
constexpr PictureSize kCardTurned{test_card::kHeight, test_card::kWidth};

// The method looked up in the session that enter() made current.
struct BoundMethod {
    PluginSession* session = nullptr;
    REALproc function = nullptr;
};

using Allowance = std::function<int64_t(PluginSession&)>;

enum class Receiver { Card, MaskedCard };

REALpicture ReceiverIn(PluginSession& session, Receiver receiver) {
    return receiver == Receiver::MaskedCard ? session.maskedCard() : session.card();
}

// The most heap any of these moments holds in host pictures, plus one row of the
// widest picture: the one buffer a method may keep besides its pictures.
int64_t AtMostOneMomentAndARow(PluginSession& session, const std::vector<std::vector<PictureSize>>& moments) {
    int64_t most = 0;
    int32_t widest = test_card::kWidth;
    for (const std::vector<PictureSize>& alive : moments) {
        int64_t bytes = 0;
        for (const PictureSize& picture : alive) {
            bytes += session.HostPictureBytes(picture);
            widest = std::max(widest, picture.width);
        }
        most = std::max(most, bytes);
    }
    return most + int64_t{widest} * 4;
}

Allowance Pictures(std::vector<std::vector<PictureSize>> moments) {
    return [moments = std::move(moments)](PluginSession& session) { return AtMostOneMomentAndARow(session, moments); };
}

Allowance RotationAllowance(double angle) {
    const RotationPictures rotation = PicturesOfRotation(test_card::kWidth, test_card::kHeight, angle);
    return Pictures({rotation.AliveInPass2(), rotation.AliveInPass3()});
}

// The turned picture R stays alive while the mask is turned the same way and
// drawn into R's new mask; with cut, a picture of the card's size (and later its
// mask) lives beside R.
Allowance RotationWithMaskAllowance(double angle, bool cut) {
    const RotationPictures turn = PicturesOfRotation(test_card::kWidth, test_card::kHeight, angle);
    const PictureSize resultMask = cut ? kCard : turn.result;
    std::vector<PictureSize> kept{turn.result};
    if (cut) kept.push_back(kCard);
    std::vector<std::vector<PictureSize>> moments{turn.AliveInPass2(), turn.AliveInPass3()};
    for (std::vector<PictureSize> moment :
         {std::vector<PictureSize>{turn.pass1, turn.pass2}, std::vector<PictureSize>{turn.pass2, turn.result},
          std::vector<PictureSize>{turn.result, resultMask}}) {
        moment.insert(moment.end(), kept.begin(), kept.end());
        moments.push_back(std::move(moment));
    }
    return Pictures(std::move(moments));
}

// One call per run, in the method's form: it counts when it gives a picture,
// True or a byte count. "BitmapQLM" hands back the receiver itself when it
// already is a 32-bit pixel map (returnedReceiver says so); then it claims no
// picture.
void RegisterMethod(const HostUnderTest& host, const std::string& task, const simhost::PictureMethod& method,
                    Allowance allowance, simhost::MethodArguments arguments = {}, Receiver receiver = Receiver::Card,
                    std::shared_ptr<bool> returnedReceiver = nullptr) {
    auto bound = std::make_shared<BoundMethod>();
    Job job;
    job.task = task;
    job.implementation = host.label;
    job.enter = [host, bound, method = &method] {
        bound->session = &PluginSession::Enter(host);
        bound->function = bound->session->Method(*method);
        bound->session->maskedCard();  // painted now, not inside a timing
    };
    job.run = [bound, form = method.form, arguments, receiver, returnedReceiver] {
        if (bound->function == nullptr) return false;
        PluginSession& session = *bound->session;
        REALpicture on = ReceiverIn(session, receiver);
        const simhost::MethodResult result = simhost::CallInForm(bound->function, form, on, arguments);
        if (returnedReceiver) *returnedReceiver = result.picture == on;
        if (result.picture != nullptr) session.host().Release(result.picture);
        return result.picture != nullptr || result.changed || result.bytes != 0;
    };
    job.allowedBytes = [bound, allowance = std::move(allowance)] { return allowance(*bound->session); };
    Register(std::move(job));
}

void RegisterHostCopy(const HostUnderTest& host) {
    Job job;
    job.task = kClone;
    job.implementation = HostCopyImplementation(host.label);
    job.enter = [host] { PluginSession::Enter(host); };
    job.run = [host] {
        PluginSession& session = PluginSession::Enter(host);
        REALpicture copy = session.HostCopyOfCard();
        if (copy == nullptr) return false;
        session.host().Release(copy);
        return true;
    };
    Register(std::move(job));
}

}  // namespace

void RegisterPluginJobs(const HostUnderTest& host) {
    for (double angle : kRotationAngles)
        RegisterMethod(host, RotateTask(angle), methods::kRotate, RotationAllowance(angle),
                       {.angle = angle, .background = kWhite});
    RegisterMethod(host, kRotateWithMask, methods::kRotateImageAndMask, RotationWithMaskAllowance(30, false),
                   {.angle = 30}, Receiver::MaskedCard);
    RegisterMethod(host, kRotateWithMaskCut, methods::kRotateImageAndMask, RotationWithMaskAllowance(30, true),
                   {.angle = 30, .cut = 1}, Receiver::MaskedCard);

    const Allowance oneCard = Pictures({{kCard}});
    const Allowance oneTurnedCard = Pictures({{kCardTurned}});
    const Allowance oneRow = Pictures({});
    RegisterMethod(host, kRotate90, methods::kRotate90, oneTurnedCard);
    RegisterMethod(host, kRotate180, methods::kRotate180, oneCard);
    RegisterMethod(host, kRotate270, methods::kRotate270, oneTurnedCard);
    RegisterMethod(host, kRotateMemory, methods::kRotateMemory, oneRow, {.angle = 30});
    RegisterMethod(host, kMirror, methods::kMirror, oneCard);
    RegisterMethod(host, kHMirror, methods::kHMirror, oneCard);
    RegisterMethod(host, kVMirror, methods::kVMirror, oneCard);
    RegisterMethod(host, kMirrorInPlace, methods::kMirrorInPlace, oneRow);
    RegisterMethod(host, kHMirrorInPlace, methods::kHMirrorInPlace, oneRow);
    RegisterMethod(host, kVMirrorInPlace, methods::kVMirrorInPlace, oneRow);
    RegisterMethod(host, kClone, methods::kClone, oneCard);
    RegisterMethod(host, kCloneToSize, methods::kCloneToSize, oneCard,
                   {.width = test_card::kWidth, .height = test_card::kHeight});
    auto returnedReceiver = std::make_shared<bool>(false);
    RegisterMethod(
        host, kBitmap, methods::kBitmap,
        [returnedReceiver, oneCard, oneRow](PluginSession& session) {
            return *returnedReceiver ? oneRow(session) : oneCard(session);
        },
        {}, Receiver::Card, returnedReceiver);
    RegisterHostCopy(host);
}

}  // namespace bench
