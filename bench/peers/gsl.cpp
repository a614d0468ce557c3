// SPDX-License-Identifier: BSD-3-Clause
#include <gsl/gsl_errno.h>
#include <gsl/gsl_multifit_nlinear.h>
#include <gsl/gsl_version.h>

#include <memory>

#include "bench/peers/competitor.h"

namespace bench {

namespace {

int values(const gsl_vector* p, void* frame, gsl_vector* r) {
  evaluate(*static_cast<const Frame*>(frame), p->data, r->data, nullptr, 0, 0);
  return GSL_SUCCESS;
}

int derivatives(const gsl_vector* p, void* frame, gsl_matrix* jacobian) {
  static std::vector<double> unused;
  unused.resize(jacobian->size1);
  evaluate(*static_cast<const Frame*>(frame), p->data, unused.data(), jacobian->data,
           static_cast<std::ptrdiff_t>(jacobian->tda), 1);
  return GSL_SUCCESS;
}

Parameters fit(const Frame& frame) {
  const auto m = 2 * static_cast<std::size_t>(frame.count());
  const gsl_multifit_nlinear_parameters defaults = gsl_multifit_nlinear_default_parameters();
  const std::unique_ptr<gsl_multifit_nlinear_workspace, void (*)(gsl_multifit_nlinear_workspace*)>
      workspace(gsl_multifit_nlinear_alloc(gsl_multifit_nlinear_trust, &defaults, m, 8),
                gsl_multifit_nlinear_free);
  gsl_multifit_nlinear_fdf function{};
  function.f = values;
  function.df = derivatives;
  function.n = m;
  function.p = 8;
  function.params = const_cast<Frame*>(&frame);
  const gsl_vector_const_view start = gsl_vector_const_view_array(frame.start.data(), 8);
  gsl_multifit_nlinear_init(&start.vector, &function, workspace.get());
  int info = 0;
  gsl_multifit_nlinear_driver(100, 1e-8, 1e-8, 1e-8, nullptr, nullptr, &info, workspace.get());
  const gsl_vector* x = gsl_multifit_nlinear_position(workspace.get());
  Parameters p;
  for (std::size_t e = 0; e < 8; ++e) p[e] = gsl_vector_get(x, e);
  return p;
}

}  // namespace

void addGsl(std::vector<Competitor>& all) {
  gsl_set_error_handler_off();
  all.push_back(framewise(
      "GSL multifit",
      "GSL " GSL_VERSION ": default parameters, tolerances 1e-8, derivatives by hand", fit));
}

}  // namespace bench
