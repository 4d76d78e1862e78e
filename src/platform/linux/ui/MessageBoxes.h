#pragma once

#include "platform/Host.h"

class QWidget;

namespace vindaro::platform {

// Shows a box of the program as a modal Qt message box and answers kAnswerOk, kAnswerYes or kAnswerNo.
// Lines joined by CR LF are shown as lines; a Yes/No question takes Yes on Enter and No on Esc.
int execMessageBox(const MessageBox& box, QWidget* parent);

} // namespace vindaro::platform
