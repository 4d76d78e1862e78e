#include "CopyChoices.h"

#include "copy/ResumeRecord.h"
#include "copy/ui/ContinueCopyDialog.h"
#include "copy/ui/ExistingFileDialog.h"

namespace vindaro::app {

copy::ContinueChoice DialogCopyChoices::askContinueCopy(
    const QString& source, const QString& destination, QWidget* parent)
{
    copy::ContinueCopyDialog dialog(parent);
    copy::ResumeRecord record;
    if (m_resumeStore && m_resumeStore->load(destination, record))
        dialog.setRecord(record);
    return copy::continueChoiceFromCode(dialog.Ask(source, destination));
}

copy::ExistingFileAnswer DialogCopyChoices::askExistingFile(
    const QString& source, const QString& destination, QWidget* parent)
{
    copy::ExistingFileDialog dialog(parent);
    const int choice = dialog.Ask(source, destination);
    return copy::ExistingFileAnswer{copy::existingFileChoiceFromCode(choice), dialog.NewName()};
}

} // namespace vindaro::app
