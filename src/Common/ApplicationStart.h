// The steps by which the program comes up and goes down. Main thread, with an application object.
#pragma once

#include <QString>

// Makes "./plugins" a place of Qt's plugins, if there is such a folder, and loads the GBK codec.
void InitializeCodec();

// Makes the font of this file the application's, at 13 points; without such a file (or with one that is no
// font) it is "Fangsong Ti" in the size as it was.
void InitApplicationFont(const QString& fontFile);
// The same with what QFontDatabase::addApplicationFont told: -1, or the font's id. An id without a family
// leaves the font as it is.
void UseApplicationFont(int nFontId);

// Brings up what all others stand on. False when there is no memory for it.
bool InitORV();

// Ends the external tools and releases the singletons; the settings are written on the way. Cameras that are
// still open close with the registry. A second call finds nothing left to release. Waits for "ps" and "kill",
// each up to a minute, once per tool.
void ClearORV();
