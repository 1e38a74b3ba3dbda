#pragma once

// One word waiting for its highlight time: its place in the view's text, in characters.
struct HignItem
{
    int pos = 0;
    int len = 0;
};
