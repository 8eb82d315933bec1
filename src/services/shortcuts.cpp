#include "services/shortcuts.h"

QKeySequence shortcutKeys(Shortcut shortcut)
{
    switch (shortcut) {
    case Shortcut::Settings: return QKeySequence(Qt::CTRL | Qt::Key_Comma);
    case Shortcut::Quit: return QKeySequence(Qt::CTRL | Qt::Key_Q);
    case Shortcut::NewWindow: return QKeySequence(Qt::CTRL | Qt::Key_N);
    case Shortcut::NewFolder: return QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_N);
    case Shortcut::Open: return QKeySequence(Qt::CTRL | Qt::Key_O);
    case Shortcut::Reveal: return QKeySequence(Qt::CTRL | Qt::Key_R);
    case Shortcut::CopyPath: return QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_C);
    case Shortcut::Properties: return QKeySequence(Qt::ALT | Qt::Key_Return);
    case Shortcut::Trash: return QKeySequence(Qt::CTRL | Qt::Key_Backspace);
    case Shortcut::AddToFavorites: return QKeySequence(Qt::META | Qt::CTRL | Qt::Key_T);
    case Shortcut::CloseWindow: return QKeySequence(Qt::CTRL | Qt::Key_W);
    case Shortcut::Copy: return QKeySequence(Qt::CTRL | Qt::Key_C);
    case Shortcut::Cut: return QKeySequence(Qt::CTRL | Qt::Key_X);
    case Shortcut::Paste: return QKeySequence(Qt::CTRL | Qt::Key_V);
    case Shortcut::Undo: return QKeySequence(Qt::CTRL | Qt::Key_Z);
    case Shortcut::Redo: return QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z);
    case Shortcut::Rename: return QKeySequence(Qt::Key_F2);
    case Shortcut::TrashKey: return QKeySequence(Qt::Key_Delete);
    case Shortcut::DeleteNow: return QKeySequence(Qt::SHIFT | Qt::Key_Delete);
    case Shortcut::SelectAll: return QKeySequence(Qt::CTRL | Qt::Key_A);
    case Shortcut::Find: return QKeySequence(Qt::CTRL | Qt::Key_F);
    case Shortcut::AsIcons: return QKeySequence(Qt::CTRL | Qt::Key_1);
    case Shortcut::AsList: return QKeySequence(Qt::CTRL | Qt::Key_2);
    case Shortcut::AsColumns: return QKeySequence(Qt::CTRL | Qt::Key_3);
    case Shortcut::AsPeek: return QKeySequence(Qt::CTRL | Qt::Key_4);
    case Shortcut::SplitRight: return QKeySequence(Qt::CTRL | Qt::Key_D);
    case Shortcut::SplitDown: return QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_D);
    case Shortcut::CloseSplit: return QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_W);
    case Shortcut::LinkPanes: return QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_L);
    case Shortcut::ToggleHidden: return QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Period);
    case Shortcut::Refresh: return QKeySequence(Qt::CTRL | Qt::Key_R);
    case Shortcut::Back: return QKeySequence(Qt::CTRL | Qt::Key_BracketLeft);
    case Shortcut::Forward: return QKeySequence(Qt::CTRL | Qt::Key_BracketRight);
    case Shortcut::EnclosingFolder: return QKeySequence(Qt::CTRL | Qt::Key_Up);
    case Shortcut::Computer: return QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C);
    case Shortcut::Minimize: return QKeySequence(Qt::CTRL | Qt::Key_M);
    case Shortcut::Preview: return QKeySequence(Qt::Key_Space);
    case Shortcut::ClosePreview: return QKeySequence(Qt::Key_Escape);
    }
    return {};
}

QKeySequence shortcutPeekStyle(int index)
{
    if (index < 0 || index > 10)
        return {};
    const Qt::Key key = index < 9 ? Qt::Key(Qt::Key_1 + index) : index == 9 ? Qt::Key_0 : Qt::Key_Minus;
    return QKeySequence(Qt::CTRL | Qt::ALT | key);
}

QString shortcutTip(const QString& label, Shortcut shortcut)
{
    return QStringLiteral("%1 (%2)").arg(label, shortcutKeys(shortcut).toString(QKeySequence::NativeText));
}
