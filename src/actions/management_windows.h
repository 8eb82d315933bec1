#pragma once
// The two management windows the application menu opens: the settings and the
// favourites manager. Each shows its window for `context` (bringing an open one to the
// front), parented to `parent`.

class QWidget;
struct BrowserContext;

void settingsWindowShow(QWidget* parent, const BrowserContext& context);
void favoritesManagerShow(QWidget* parent, const BrowserContext& context);
