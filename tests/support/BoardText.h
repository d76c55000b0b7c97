// Boards as pictures in failure messages: five rows of four characters.
#pragma once

#include "game/GameState.h"

#include <QByteArray>

inline QByteArray BoardPicture(const GameState &game)
{
    QByteArray text;
    for (int r = 0; r < BoardRows; ++r) {
        if (r)
            text += '/';
        for (int c = 0; c < BoardCols; ++c)
            text += game.board[r][c] < 0 ? '.' : char('0' + game.board[r][c]);
    }
    return text;
}
