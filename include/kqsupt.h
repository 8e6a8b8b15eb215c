/* The whole interface of libkqsupt. */
#ifndef KQSUPT_H
#define KQSUPT_H

#include <kqsupt/containers.h>
#include <kqsupt/frame.h>
#include <kqsupt/sdo.h>
#include <kqsupt/text.h>

#endif
