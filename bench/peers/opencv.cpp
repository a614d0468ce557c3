// SPDX-License-Identifier: BSD-3-Clause
#include <opencv2/calib3d.hpp>
#include <opencv2/core.hpp>

#include "bench/peers/competitor.h"

namespace bench {

namespace {

cv::Mat pointsOf(const std::vector<float>& points) {
  const int count = static_cast<int>(points.size() / 2);
  return cv::Mat(count, 1, CV_32FC2, const_cast<float*>(points.data()));
}

// A linear fit, then Levenberg-Marquardt: it has no weights and takes no start.
Parameters fitHomography(const Frame& frame) {
  const cv::Mat h = cv::findHomography(pointsOf(frame.base), pointsOf(frame.moved), 0);
  if (h.empty()) return frame.start;
  Parameters p;
  for (int e = 0; e < 8; ++e) p[static_cast<std::size_t>(e)] = h.at<double>(e % 3, e / 3);
  return p;
}

struct Callback : cv::LMSolver::Callback {
  explicit Callback(const Frame& f) : frame(f) {}
  bool compute(cv::InputArray parameters, cv::OutputArray error,
               cv::OutputArray jacobian) const override {
    const int values = 2 * frame.count();
    error.create(values, 1, CV_64F);
    double* rows = nullptr;
    if (jacobian.needed()) {
      jacobian.create(values, 8, CV_64F);
      rows = jacobian.getMat().ptr<double>();
    }
    evaluate(frame, parameters.getMat().ptr<double>(), error.getMat().ptr<double>(), rows, 8, 1);
    return true;
  }
  const Frame& frame;
};

Parameters fitByItsSolver(const Frame& frame) {
  cv::Mat p(8, 1, CV_64F);
  std::copy(frame.start.begin(), frame.start.end(), p.ptr<double>());
  cv::LMSolver::create(cv::makePtr<Callback>(frame), 30)->run(p);
  Parameters fitted;
  std::copy(p.ptr<double>(), p.ptr<double>() + 8, fitted.begin());
  return fitted;
}

}  // namespace

void addOpencv(std::vector<Competitor>& all) {
  cv::setNumThreads(1);
  const std::string version = "OpenCV " CV_VERSION ": ";
  all.push_back(framewise("OpenCV findHomography",
                          version + "method 0; no weights, a linear fit as the start",
                          fitHomography));
  all.back().usesWeights = false;
  all.push_back(
      framewise("OpenCV LMSolver", version + "30 iterations, derivatives by hand", fitByItsSolver));
}

}  // namespace bench
