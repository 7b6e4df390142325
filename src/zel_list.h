// SPDX-License-Identifier: MIT
//
// Intrusive circular list with a head that is no record. A record begins with its node, so a node is its record's
// address.
#ifndef ZEL_LIST_H
#define ZEL_LIST_H

struct list_head {
    list_head* next;
    list_head* prev;
};

static inline void list_init(list_head* list)
{
    list->next = list;
    list->prev = list;
}

static inline void __list_add(list_head* newe, list_head* prev, list_head* next)
{
    next->prev = newe;
    newe->next = next;
    newe->prev = prev;
    prev->next = newe;
}

// Appends, so that a list stays in order of creation.
static inline void list_add_tail(list_head* newe, list_head* head)
{
    __list_add(newe, head->prev, head);
}

// Unlinks what stands between prev and next. The node's own links stay, but a walk that frees the node must
// read them first.
static inline void __list_del(list_head* prev, list_head* next)
{
    next->prev = prev;
    prev->next = next;
}

#endif
