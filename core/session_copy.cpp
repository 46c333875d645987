#include "core/session_copy.h"

namespace subsurf {

void copyImages(CoreSession& from, CoreSession& to) {
  to.close();
  for (CoreImage* source : from.images()) {
    CoreImage* copy = to.newImage();
    copy->files = source->files;
    copy->texts = source->texts;
    copy->views = source->views;
    copy->ints = source->ints;
    copy->reals = source->reals;
    copy->coreLengthCopy = source->coreLengthCopy;
    copy->trayLengthCopy = source->trayLengthCopy;
    copy->angle = source->angle;
    copy->displayReduction = source->displayReduction;
    copy->viewShown = source->viewShown;
    for (CoreRectangle* r : CoreSession::rectangles(*source)) to.newRectangle(*copy)->polygon = r->polygon;
  }
}

}  // namespace subsurf
