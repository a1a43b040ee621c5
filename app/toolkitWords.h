#pragma once

#include <QTranslator>

/// The toolkit's words on boxes and in their menus, from the catalogues of language/: no translation of the
/// toolkit needs to be there. For as long as it lives, within the application's life.
class toolkitWords : public QTranslator
{
public:
    toolkitWords();

    QString translate(const char *context, const char *english, const char *comment,
                      int count) const override;
};
