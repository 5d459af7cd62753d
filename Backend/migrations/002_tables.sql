-- The five tables. Every key begins with the account, so that an account is one range of every index and
-- one shard of a distributed database. Keys compare by bytes: no locale makes them slower, and no upgrade
-- of a locale breaks their indexes. Columns of fixed width come first, because padding costs bytes in
-- every row. There are no foreign keys: uploads arrive in any order.
--
-- Days are whatever a calendar writes with four digits for the year. Counts are bounded so that no sum
-- of an account's rows can leave bigint and make the account unreadable.

CREATE TABLE public.device_day_counts (
    count bigint NOT NULL CHECK (count BETWEEN 0 AND 1000000000000),
    updated_at timestamptz NOT NULL,
    day date NOT NULL CHECK (day BETWEEN DATE '0001-01-01' AND DATE '9999-12-31'),
    customer_email text COLLATE "C" NOT NULL CHECK (char_length(customer_email) BETWEEN 1 AND 320),
    device_id text COLLATE "C" NOT NULL CHECK (char_length(device_id) BETWEEN 1 AND 64),
    PRIMARY KEY (customer_email, day, device_id)
);

CREATE TABLE public.device_hour_counts (
    count bigint NOT NULL CHECK (count BETWEEN 0 AND 1000000000000),
    updated_at timestamptz NOT NULL,
    day date NOT NULL CHECK (day BETWEEN DATE '0001-01-01' AND DATE '9999-12-31'),
    hour smallint NOT NULL CHECK (hour BETWEEN 0 AND 23),
    customer_email text COLLATE "C" NOT NULL CHECK (char_length(customer_email) BETWEEN 1 AND 320),
    device_id text COLLATE "C" NOT NULL CHECK (char_length(device_id) BETWEEN 1 AND 64),
    PRIMARY KEY (customer_email, day, hour, device_id)
);

-- The application stands before the hour: the totals of thirty days are then read in the order in which
-- they are summed.
CREATE TABLE public.device_app_hour_counts (
    count bigint NOT NULL CHECK (count BETWEEN 0 AND 1000000000000),
    updated_at timestamptz NOT NULL,
    day date NOT NULL CHECK (day BETWEEN DATE '0001-01-01' AND DATE '9999-12-31'),
    hour smallint NOT NULL CHECK (hour BETWEEN 0 AND 23),
    customer_email text COLLATE "C" NOT NULL CHECK (char_length(customer_email) BETWEEN 1 AND 320),
    device_id text COLLATE "C" NOT NULL CHECK (char_length(device_id) BETWEEN 1 AND 64),
    bundle_id text COLLATE "C" NOT NULL CHECK (char_length(bundle_id) BETWEEN 1 AND 255),
    PRIMARY KEY (customer_email, day, bundle_id, hour, device_id) INCLUDE (count)
);

CREATE TABLE public.device_app_registry (
    updated_at timestamptz NOT NULL,
    is_hidden boolean NOT NULL,
    customer_email text COLLATE "C" NOT NULL CHECK (char_length(customer_email) BETWEEN 1 AND 320),
    bundle_id text COLLATE "C" NOT NULL CHECK (char_length(bundle_id) BETWEEN 1 AND 255),
    app_name text NOT NULL CHECK (char_length(app_name) <= 512),
    PRIMARY KEY (customer_email, bundle_id)
);

-- Beyond these years a time has no text of the form that clients read, and one such row would cost an
-- account its whole list.
CREATE TABLE public.devices (
    last_seen_at timestamptz NOT NULL
        CHECK (last_seen_at >= TIMESTAMPTZ '0001-01-01 00:00:00Z' AND last_seen_at < TIMESTAMPTZ '10000-01-01 00:00:00Z'),
    customer_email text COLLATE "C" NOT NULL CHECK (char_length(customer_email) BETWEEN 1 AND 320),
    device_id text COLLATE "C" NOT NULL CHECK (char_length(device_id) BETWEEN 1 AND 64),
    device_name text NOT NULL CHECK (char_length(device_name) <= 512),
    PRIMARY KEY (customer_email, device_id)
);
