#include "app/SNLaunchRequest.h"

QStringList SNLaunchRequest::actionNames()
{
    return { showAllNotesAction(), newNoteAction(), noteFromSelectionAction(), toggleTagsAction(),
        quitAction() };
}
