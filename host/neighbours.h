// SPDX-License-Identifier: MIT
//
// The boxes of two neighbouring frames and how they overlap: what tells detections that persist from those that do not,
// and how the camera moved.
#pragma once

namespace zelhost {

struct seen_box {
    float x1;
    float y1;
    float x2;
    float y2;
    float confidence;
    int best;       // box of the other frame that it overlaps most, -1: none
    float overlap;  // with it: intersection over union
};

struct frame_boxes {
    seen_box* boxes;  // by x1
    int count;
};

struct neighbours {
    frame_boxes now;
    frame_boxes before;
    void* work;  // of the sweep; 32 bytes for each box
    int room;    // boxes that each of them has room for
};

// Makes room for more boxes; those that are there stay. False if memory runs out, and nothing has changed.
bool make_neighbour_room(neighbours* it, int room);
void free_neighbours(neighbours* it);

void clear_neighbours(neighbours* it);

// Begins a frame: the boxes of the last one become those before.
void next_frame(neighbours* it);

// Finds for each box of both frames the one that it overlaps most. Sorts the boxes of now.
void find_neighbours(neighbours* it);

}  // namespace zelhost
