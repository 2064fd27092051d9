#pragma once

class QCoreApplication;

/**
 * The application object that was created here; null if the host had one. UnInitQt() deletes it without resetting this.
 */
extern QCoreApplication *qtApp;

/** Creates what painting text needs: an application object, if the host has none, and fonts. For the first renderer. */
void InitQt();

/** Deletes what InitQt() created. For the last renderer. */
void UnInitQt();

/**
 * Makes fonts available if they are not. InitQt() does so, but a host that destroys its QGuiApplication while renderers
 * live takes the fonts away; so call this before painting text. Cheap if there is nothing to do. Qt 6 has no fonts
 * without an application object, so that one is created if the host has destroyed its own.
 */
void EnsureFonts();
