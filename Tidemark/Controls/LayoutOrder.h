#pragma once

class QWidget;

namespace tidemark {

/// Has the tab key and screen readers go through the children of `root` in the order of its layouts,
/// whenever its widgets were made.
void orderAsLaidOut(QWidget& root);

}  // namespace tidemark
