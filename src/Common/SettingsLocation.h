// Where the program keeps its files.
#pragma once

#include <QString>

// The folder of the settings files: `executableDir` itself when files can be made in it, else the user's
// configuration folder for this program (made when missing). A system-wide installation is read-only for its
// users.
QString SettingsDirectory(const QString& executableDir);

// The output folder of a first start: `executableDir` + "/Data" when that is possible, else a folder in the
// user's pictures.
QString FirstOutputFolder(const QString& executableDir);
