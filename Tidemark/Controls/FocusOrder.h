#pragma once

class QWidget;

namespace tidemark {

/// Has the tab key go through `root` in the order of its layouts, whenever its widgets were made.
void orderFocus(QWidget& root);

}  // namespace tidemark
