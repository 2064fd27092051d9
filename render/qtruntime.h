#pragma once

class QCoreApplication;

/** The application object made here; null when the host had one. Not reset by UnInitQt(). */
extern QCoreApplication *qtApp;

/** Makes painting text possible: an application object, where the host has none, and fonts. For the first renderer. */
void InitQt();

/** Takes away what InitQt() made. For the last renderer. */
void UnInitQt();

/**
 * Makes fonts available where they are not. InitQt() does so, but a host's own QGuiApplication takes the fonts with it
 * when it goes while renderers live; so ask again before text is painted. Cheap when there is nothing to do. With Qt 6 a
 * host's application object that is gone is replaced by one of ours, without which there are no fonts.
 */
void EnsureFonts();
