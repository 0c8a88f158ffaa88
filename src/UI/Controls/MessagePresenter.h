// The dialog behind QFunction::ShowMessage.
#pragma once

// Makes QFunction::ShowMessage build and run a QShowMessageDlg: centred on the desktop, window-modal with a
// parent, application-modal without. Look::Apply calls it. Main thread.
void RegisterMessagePresenter();
