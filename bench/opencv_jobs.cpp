// OpenCV, four 8-bit channels. The rotation is warpAffine with bilinear
// interpolation onto the same expanded canvas RotateQLM makes, white outside the
// picture; the right angles are cv::rotate, the mirrors cv::flip (in place when
// source and destination are the same matrix). Every result is a new matrix, so
// each call allocates as the plug-in's methods do.
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "bench/job.h"
#include "bench/peer_jobs.h"
#include "bench/rotation_geometry.h"
#include "bench/tasks.h"
#include "bench/test_card.h"

namespace bench {

namespace {

struct OpenCv {
    cv::Mat card;
    cv::Mat mirrored;  // what the in-place jobs turn back and forth
};

OpenCv& Started() {
    static OpenCv opencv = [] {
        cv::setNumThreads(1);
        std::vector<uint8_t> bytes = test_card::RgbaBytes();
        cv::Mat card = cv::Mat(test_card::kHeight, test_card::kWidth, CV_8UC4, bytes.data()).clone();
        return OpenCv{card, card.clone()};
    }();
    return opencv;
}

template <typename Transform>
void RegisterTask(const std::string& task, Transform transform) {
    Register({task, kOpenCv, [] { Started(); }, [transform] { return transform(Started()); }, {}});
}

template <typename Transform>
void RegisterNewPicture(const std::string& task, Transform transform) {
    RegisterTask(task, [transform](OpenCv& opencv) {
        cv::Mat result;
        transform(opencv.card, result);
        return !result.empty();
    });
}

void RegisterInPlaceFlip(const std::string& task, int flipCode) {
    RegisterTask(task, [flipCode](OpenCv& opencv) {
        cv::flip(opencv.mirrored, opencv.mirrored, flipCode);
        return true;
    });
}

// Turns about the card's centre and moves that centre to the canvas's centre.
void Rotate(const cv::Mat& card, cv::Mat& result, double anticlockwiseDegrees) {
    const PictureSize canvas = PicturesOfRotation(card.cols, card.rows, anticlockwiseDegrees).result;
    cv::Mat turn = cv::getRotationMatrix2D(cv::Point2f((card.cols - 1) / 2.0f, (card.rows - 1) / 2.0f),
                                           anticlockwiseDegrees, 1.0);
    turn.at<double>(0, 2) += (canvas.width - card.cols) / 2.0;
    turn.at<double>(1, 2) += (canvas.height - card.rows) / 2.0;
    cv::warpAffine(card, result, turn, cv::Size(canvas.width, canvas.height), cv::INTER_LINEAR, cv::BORDER_CONSTANT,
                   cv::Scalar::all(255));
}

}  // namespace

void RegisterOpenCvJobs() {
    for (double angle : kRotationAngles)
        RegisterNewPicture(RotateTask(angle), [angle](const cv::Mat& card, cv::Mat& result) { Rotate(card, result, angle); });
    RegisterNewPicture(kRotate90, [](const cv::Mat& card, cv::Mat& result) {
        cv::rotate(card, result, cv::ROTATE_90_COUNTERCLOCKWISE);
    });
    RegisterNewPicture(kRotate180, [](const cv::Mat& card, cv::Mat& result) { cv::rotate(card, result, cv::ROTATE_180); });
    RegisterNewPicture(kRotate270, [](const cv::Mat& card, cv::Mat& result) {
        cv::rotate(card, result, cv::ROTATE_90_CLOCKWISE);
    });
    RegisterNewPicture(kMirror, [](const cv::Mat& card, cv::Mat& result) { cv::flip(card, result, -1); });
    RegisterNewPicture(kHMirror, [](const cv::Mat& card, cv::Mat& result) { cv::flip(card, result, 1); });
    RegisterNewPicture(kVMirror, [](const cv::Mat& card, cv::Mat& result) { cv::flip(card, result, 0); });
    RegisterInPlaceFlip(kMirrorInPlace, -1);
    RegisterInPlaceFlip(kHMirrorInPlace, 1);
    RegisterInPlaceFlip(kVMirrorInPlace, 0);
    RegisterNewPicture(kClone, [](const cv::Mat& card, cv::Mat& result) { result = card.clone(); });
}

}  // namespace bench
