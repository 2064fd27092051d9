#pragma once

/** Gives the process, and the library through it, a locale whose text encoding users expect. */
void SetProcessLocale();
