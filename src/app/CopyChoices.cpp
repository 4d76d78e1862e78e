#include "CopyChoices.h"

#include "copy/ResumeRecord.h"
#include "copy/ui/ContinueCopyDialog.h"
#include "copy/ui/ExistingFileDialog.h"

namespace vindaro::app {

int DialogCopyChoices::askContinueCopy(const QString& source, const QString& destination, QWidget* parent)
{
    copy::ContinueCopyDialog dialog(parent);
    copy::ResumeRecord record;
    if (m_resumeStore && m_resumeStore->load(destination, record))
        dialog.setRecord(record);
    return dialog.Ask(source, destination);
}

int DialogCopyChoices::askExistingFile(
    const QString& source, const QString& destination, QString& newName, QWidget* parent)
{
    copy::ExistingFileDialog dialog(parent);
    const int choice = dialog.Ask(source, destination);
    newName = dialog.NewName();
    return choice;
}

} // namespace vindaro::app
