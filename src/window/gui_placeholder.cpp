// The browser window lands here; this keeps the library non-empty until then.
namespace brondel_gui_placeholder {
int unused = 0;
}
