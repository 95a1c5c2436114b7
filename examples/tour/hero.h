// The picture that opens the page and the documents.
#pragma once

#include "tour.h"

namespace tour {

// The photograph in upright strips, each as another family of functions sees it.
Picture hero(const Scene& scene);

}  // namespace tour
