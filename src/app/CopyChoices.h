#pragma once

#include "copy/CopyHost.h"

#include <QString>

class QWidget;

namespace vindaro::copy {
class ResumeStore;
}

namespace vindaro::app {

// The two choice dialogs of a copy to an existing destination, behind an interface so that tests answer
// them without a modal window.
class CopyChoices
{
public:
    virtual ~CopyChoices() = default;
    virtual copy::ContinueChoice askContinueCopy(
        const QString& source, const QString& destination, QWidget* parent)
        = 0;
    virtual copy::ExistingFileAnswer askExistingFile(
        const QString& source, const QString& destination, QWidget* parent)
        = 0;
};

// The real dialogs, each created for one question and released after it. With a resume store, the
// continue-copy dialog also tells how far the last copy got.
class DialogCopyChoices final : public CopyChoices
{
public:
    explicit DialogCopyChoices(copy::ResumeStore* resumeStore = nullptr)
        : m_resumeStore(resumeStore)
    {
    }
    copy::ContinueChoice askContinueCopy(
        const QString& source, const QString& destination, QWidget* parent) override;
    copy::ExistingFileAnswer askExistingFile(
        const QString& source, const QString& destination, QWidget* parent) override;

private:
    copy::ResumeStore* m_resumeStore; // may be null
};

} // namespace vindaro::app
