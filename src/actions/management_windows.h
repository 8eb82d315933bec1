#pragma once
// The two management windows: Settings and the favourites manager. One of each at a
// time; asking again brings the open one to the front.

class QWidget;
struct BrowserContext;

void settingsWindowShow(QWidget* parent, const BrowserContext& context);
void favoritesManagerShow(QWidget* parent, const BrowserContext& context);
