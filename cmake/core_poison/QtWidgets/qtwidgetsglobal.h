#error "brondel_core must not include Qt Widgets headers: move this code to brondel_gui"
