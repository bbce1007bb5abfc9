#pragma once

int table_height();
