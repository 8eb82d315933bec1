#include "app/cli_peek_styles.h"

#include "config/config_file.h"
#include "config/peek_order.h"

int CLIPeekStyles::run(CliOut& out)
{
    const std::vector<std::string> saved = peekOrderLoad();
    const std::vector<const LabVariant*> styles = peekOrderApply(saved);
    const std::optional<std::string> current = peekStyleCurrent();
    out.line("# " + peekOrderPath() + "  saved=" + std::to_string(saved.size()) + "  styles="
             + std::to_string(styles.size()));
    for (size_t i = 0; i < styles.size(); ++i) {
        const LabVariant& style = *styles[i];
        const char* marker = current && style.title() == *current ? "*" : " ";
        out.line(std::string(marker) + " " + std::to_string(i + 1) + "\t" + style.title() + " \u2014 " + style.blurb());
    }
    return 0;
}
