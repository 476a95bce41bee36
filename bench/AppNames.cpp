// SPDX-License-Identifier: MIT
#include "AppNames.h"

#include <random>

namespace velkor::bench {

QStringList generatedAppNames(int count)
{
    const QStringList vendors{"Adobe", "Microsoft", "Google",   "JetBrains", "GNOME", "KDE",
                              "Apple", "Mozilla",   "Affinity", "Visual",    "Open",  "Libre"};
    const QStringList words{
        "Studio",  "Code",     "Photo",   "Sound",    "Vista",   "Editor",   "Terminal", "Mail",
        "Notes",   "Calendar", "Music",   "Player",   "Viewer",  "Manager",  "Browser",  "Office",
        "Writer",  "Draw",     "Calc",    "Impress",  "Monitor", "Settings", "Files",    "Disk",
        "Utility", "Maps",     "Weather", "Clock",    "Timer",   "Camera",   "Scanner",  "Reader",
        "Chat",    "Video",    "Studio",  "Designer", "Builder", "Console",  "Sync",     "Backup"};
    const QStringList compounds{"PhotoShop", "LightRoom", "VirtualBox", "FileZilla", "KeePassXC",
                                "GitKraken", "DaVinci",   "ObsStudio",  "TablePlus", "DBeaver"};
    const QStringList international{
        "Café Manager", "Übersicht", "Éditeur de texte", "Añadir Fotos", "Ärzte Kalender",
        "Журнал",       "メモ帳",    "计算器",           "Bloc-notes",   "Cafe\u0301 Noir"};
    std::mt19937 random(20261123);
    const auto pick = [&random](const QStringList& list) {
        return list.at(qsizetype(random() % quint32(list.size())));
    };
    QStringList names;
    names.reserve(count);
    for (int i = 0; i < count; ++i) {
        const quint32 shape = random() % 100;
        QString name;
        if (shape < 5)
            name = pick(international);
        else if (shape < 20)
            name = pick(compounds);
        else if (shape < 60)
            name = pick(vendors) + ' ' + pick(words);
        else
            name = pick(words) + ' ' + pick(words);
        if (random() % 4 == 0)
            name += ' ' + QString::number(2015 + random() % 12);
        names.append(name);
    }
    return names;
}

} // namespace velkor::bench
