#pragma once

#include "platform/Host.h"

class QWidget;

namespace vindaro::app {

// Shows a message box and answers its code (kAnswerOk, kAnswerYes, kAnswerNo). Windows take one of these
// instead of calling QMessageBox themselves, so tests answer questions without a modal box.
class BoxPresenter
{
public:
    virtual ~BoxPresenter() = default;
    virtual int present(const platform::MessageBox& box, QWidget* parent) = 0;
};

// The real one: a QMessageBox with the box's icon, title and buttons. Texts keep their line breaks
// ("\r\n" is shown as one break).
class MessageBoxPresenter final : public BoxPresenter
{
public:
    int present(const platform::MessageBox& box, QWidget* parent) override;
};

} // namespace vindaro::app
