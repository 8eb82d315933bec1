#error "brondel_core must not include Qt Gui headers: move this code to brondel_gui"
