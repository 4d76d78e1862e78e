#include "BoxPresenter.h"

#include "platform/linux/ui/MessageBoxes.h"

namespace vindaro::app {

int MessageBoxPresenter::present(const platform::MessageBox& box, QWidget* parent)
{
    return platform::execMessageBox(box, parent);
}

} // namespace vindaro::app
